quenlor_test(partition
  SOURCES
    MountTypesTest.cpp
    PartitionGroupTest.cpp
    SwapAreaTest.cpp
  DEPENDS config host log model partition timelimit)
