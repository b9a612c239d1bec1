quenlor_test(writers
  SOURCES MifUtilTest.cpp OutputFileTest.cpp WriterRoundTripTest.cpp XmlUtilTest.cpp
  DEPENDS writers model catalogue host log "${QUENLOR_EXPAT}")
target_include_directories(test_writers SYSTEM PRIVATE "${QUENLOR_EXPAT_INCLUDE}")
