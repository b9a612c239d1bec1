quenlor_library(storage
  SOURCES DiskSize.cpp FdiskOutput.cpp FloppyDrives.cpp IdeDrives.cpp RaidDrives.cpp RaidStatus.cpp
          ScsiDrives.cpp ScsiNodes.cpp SgEnumeration.cpp SgModule.cpp StorageGroup.cpp StorageRow.cpp
          StorageText.cpp TapeBackup.cpp floppyinfo.cpp ideinfo.cpp scsi_info.cpp scsiinfo.cpp
  DEPENDS host log model
  PRIVATE base identity timelimit)
