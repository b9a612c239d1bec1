# Makes the source of the PCI name tables; its path is then in QUENLOR_PCI_TABLES.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(QUENLOR_PCI_TABLES "${CMAKE_CURRENT_BINARY_DIR}/PciTables.cpp")
add_custom_command(
  OUTPUT "${QUENLOR_PCI_TABLES}"
  COMMAND Python3::Interpreter "${CMAKE_CURRENT_LIST_DIR}/pci-generate.py"
          "${CMAKE_CURRENT_LIST_DIR}/pci-vendors.tsv" "${CMAKE_CURRENT_LIST_DIR}/pci-devices.tsv"
          "${QUENLOR_PCI_TABLES}"
  DEPENDS "${CMAKE_CURRENT_LIST_DIR}/pci-generate.py" "${CMAKE_CURRENT_LIST_DIR}/pci-vendors.tsv"
          "${CMAKE_CURRENT_LIST_DIR}/pci-devices.tsv"
  COMMENT "Making the PCI name tables"
  VERBATIM)
