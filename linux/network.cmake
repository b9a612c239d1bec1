include(${PROJECT_SOURCE_DIR}/data/pci.cmake)

quenlor_library(network
  SOURCES DefaultGateway.cpp HostNames.cpp IfconfigText.cpp IfInfoList.cpp InterfaceQuery.cpp
          IpAddressGroup.cpp NetworkAdapterGroup.cpp ResolvConf.cpp
  DEPENDS host model
  PRIVATE base identity log)

quenlor_library(pci
  SOURCES PCIDeviceGroup.cpp PciListing.cpp PciLookup.cpp ${QUENLOR_PCI_TABLES}
  DEPENDS model
  PRIVATE host log)
