quenlor_test(pci
  SOURCES PCIDeviceGroupTest.cpp PciListingTest.cpp PciLookupTest.cpp
  DEPENDS pci log)

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# The tables follow from the list of the package pci.ids, where that version of it is installed.
add_test(NAME pci.tablesFollowFromTheList
         COMMAND Python3::Interpreter "${PROJECT_SOURCE_DIR}/data/pci-derive.py" --check)
set_tests_properties(pci.tablesFollowFromTheList PROPERTIES LABELS unit SKIP_RETURN_CODE 77)

quenlor_test(network
  SOURCES DefaultGatewayTest.cpp HostNamesTest.cpp IfconfigTextTest.cpp IfInfoListTest.cpp
          IpAddressGroupTest.cpp NetworkAdapterGroupTest.cpp NetworkNamespaceTest.cpp ResolvConfTest.cpp
  DEPENDS network log)
