# The archive holds the program alone, in a folder named after it.
if(CPACK_GENERATOR STREQUAL "TGZ")
  set(CPACK_PACKAGING_INSTALL_PREFIX "")
  set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)
  set(CPACK_INSTALL_CMAKE_PROJECTS "${CPACK_ORVEX_BINARY_DIR};Orvex;program;/")
endif()
