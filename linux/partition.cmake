quenlor_library(partition
  SOURCES
    MountTypes.cpp
    PartitionGroup.cpp
    SwapArea.cpp
  DEPENDS model
  PRIVATE host log timelimit)
