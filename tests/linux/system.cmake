quenlor_test(system
  SOURCES MemoryGroupTest.cpp OperatingSystemGroupTest.cpp RegionalGroupTest.cpp
          SystemTraceTest.cpp UnixCpuMeterTest.cpp UnixSystemParamsGroupTest.cpp
  DEPENDS system firmware_builder log smbios)
