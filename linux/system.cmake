quenlor_library(system
  SOURCES CpuMeterGroup.cpp Meminfo.cpp MemoryGroup.cpp OperatingSystemGroup.cpp RegionalGroup.cpp
          ScanInfoGroup.cpp UnixCpuMeter.cpp UnixCpuMeterGroup.cpp UnixSystemParamsGroup.cpp
  DEPENDS model
  PRIVATE base host log smbios)
