# What `cpack` packs: a Debian package with the program in /opt/orvex, and an archive that runs from wherever it is unpacked.
set(program .)
# Beside /opt/orvex, where desktops look.
set(shared ../../usr/share)

install(TARGETS Orvex OrvexBus JetImport orvexctl DESTINATION ${program} COMPONENT program)
install(FILES data/VNIl.dat data/VCODE.dat DESTINATION ${program} COMPONENT program)
install(DIRECTORY help DESTINATION ${program} COMPONENT program)
install(DIRECTORY docs/tour/ DESTINATION ${program}/help/images COMPONENT program)
install(DIRECTORY docs DESTINATION ${program} COMPONENT program FILES_MATCHING PATTERN "protocol.md")
install(FILES data/fonts/LICENSE.txt DESTINATION ${program}/licenses RENAME fonts.txt COMPONENT program)
# An installation to learn on, for the simulator.
install(DIRECTORY data/demo/Data DESTINATION ${program}/demo COMPONENT program)
install(FILES ${CMAKE_BINARY_DIR}/demo/Harbinet.mdb DESTINATION ${program}/demo COMPONENT program)

install(FILES data/desktop/orvex.desktop DESTINATION ${shared}/applications COMPONENT desktop)
install(FILES data/desktop/io.orvex.Orvex.metainfo.xml DESTINATION ${shared}/metainfo COMPONENT desktop)
install(FILES data/pictures/orvex.svg DESTINATION ${shared}/icons/hicolor/scalable/apps COMPONENT desktop)

add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/demo/Harbinet.mdb
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/demo
  COMMAND ${CMAKE_COMMAND} -E rm -f ${CMAKE_BINARY_DIR}/demo/Harbinet.mdb ${CMAKE_BINARY_DIR}/demo/VNI-ZR.bin
  COMMAND MakeDemo ${CMAKE_BINARY_DIR}/demo/Harbinet.mdb ${CMAKE_SOURCE_DIR}/data/demo/demo.sql
  DEPENDS MakeDemo data/demo/demo.sql)
add_custom_target(demo_database ALL DEPENDS ${CMAKE_BINARY_DIR}/demo/Harbinet.mdb)

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME orvex)
set(CPACK_PACKAGE_VENDOR Orvex)
set(CPACK_PACKAGE_CONTACT "Orvex <orvex@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "configuration and commissioning station of queue-management installations")
set(CPACK_PACKAGE_DESCRIPTION "Describes ticket printers, counters, displays and hubs on a serial bus in a database, builds what each device needs,
sends it, and exercises single devices. OrvexBus plays the devices in software.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_PACKAGE_FILE_NAME orvex-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /opt/orvex)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded at run time, which no library tells.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, xdg-utils")
set(CPACK_ORVEX_BINARY_DIR ${CMAKE_BINARY_DIR})
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/cmake/PackageOfGenerator.cmake)
include(CPack)
