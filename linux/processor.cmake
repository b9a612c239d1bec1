quenlor_library(enabler
  SOURCES enabler/check_vm.cpp enabler/retriever.cpp
  DEPENDS base
  PRIVATE host log)

quenlor_library(processor
  SOURCES
    HostComponentIDGroup.cpp
    LParGroup.cpp
    PhysicalProcDescription.cpp
    PhysicalProcessorGroup.cpp
    ProcCpuinfo.cpp
    ProcessorFamily.cpp
    ProcessorFlags.cpp
    ProcessorGroup.cpp
    RealSpeedValue.cpp
  DEPENDS base factory log model
  PRIVATE enabler host identity machine smbios vmware vtcmd)
