quenlor_test(enabler
  SOURCES enabler/CheckVmTest.cpp enabler/RetrieverTest.cpp
  DEPENDS enabler host log)

quenlor_test(processor
  SOURCES HostComponentIDGroupTest.cpp LParGroupTest.cpp PhysicalProcDescriptionTest.cpp
          PhysicalProcessorGroupTest.cpp ProcCpuinfoTest.cpp ProcessorFactsTest.cpp
          ProcessorGroupTest.cpp ProcessorTraceTest.cpp
  DEPENDS processor cpu_machine firmware_builder factory host identity log machine smbios vmware
          vtcmd)
