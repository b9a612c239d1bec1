quenlor_test(enabler
  SOURCES enabler/CheckVmTest.cpp enabler/RetrieverTest.cpp
  DEPENDS enabler host log)

quenlor_test(processor
  SOURCES ProcCpuinfoTest.cpp ProcessorFactsTest.cpp
  DEPENDS processor cpu_machine firmware_builder factory host identity log machine smbios vmware
          vtcmd)
