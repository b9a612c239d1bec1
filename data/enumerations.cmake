# quenlor_generate_enumerations(<output.cpp> TABLE_NAME list.tsv[+list.tsv] [TABLE_NAME list.tsv ...])
# Makes C++ enumeration tables from the lists of this folder.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(QUENLOR_DATA_DIR "${CMAKE_CURRENT_LIST_DIR}")

function(quenlor_generate_enumerations output)
  set(arguments "")
  set(lists "")
  while(ARGN)
    list(POP_FRONT ARGN name file)
    string(REPLACE "+" ";" parts "${file}")
    list(TRANSFORM parts PREPEND "${QUENLOR_DATA_DIR}/")
    list(APPEND lists ${parts})
    list(JOIN parts "+" joined)
    list(APPEND arguments "${name}=${joined}")
  endwhile()
  add_custom_command(
    OUTPUT "${output}"
    COMMAND Python3::Interpreter "${QUENLOR_DATA_DIR}/enumerations.py" "${output}" ${arguments}
    DEPENDS "${QUENLOR_DATA_DIR}/enumerations.py" ${lists}
    COMMENT "Generating enumeration tables"
    VERBATIM)
endfunction()
