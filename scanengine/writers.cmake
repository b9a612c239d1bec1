# The XML and the MIF document.
quenlor_library(writers
  SOURCES OutputFile.cpp mifUtil.cpp xmlUtil.cpp
  DEPENDS catalogue host log model
  PRIVATE xmltree)
