quenlor_test(storage
  SOURCES FdiskOutputTest.cpp FloppyinfoTest.cpp GetScsiInfoTest.cpp IdeinfoTest.cpp RaidStatusTest.cpp ScriptedSgDevice.cpp
          ScsiinfoTest.cpp SgEnumerationTest.cpp SgModuleTest.cpp StorageGroupTest.cpp
          StorageTextTest.cpp StorageTimeoutTest.cpp StorageTraceTest.cpp TapeBackupTest.cpp
  DEPENDS config storage timelimit)
