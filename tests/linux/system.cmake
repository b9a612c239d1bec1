quenlor_test(system
  SOURCES MemoryGroupTest.cpp OperatingSystemGroupTest.cpp RegionalGroupTest.cpp
          UnixCpuMeterTest.cpp UnixSystemParamsGroupTest.cpp
  DEPENDS system)
