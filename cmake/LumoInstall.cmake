# Makes the installed library known to CMake (find_package) and to pkg-config, and installs the
# public headers, .proto files, documents and examples. Libraries are installed where they are declared.
include(CMakePackageConfigHelpers)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# For clients and centres in other languages.
file(GLOB_RECURSE PROTOS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/components/*.proto)
install(FILES ${PROTOS} DESTINATION ${CMAKE_INSTALL_DATADIR}/lumo/proto)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/service/lumo-centre.toml ${PROJECT_SOURCE_DIR}/service/haproxy.cfg
    ${PROJECT_SOURCE_DIR}/SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
foreach(LUMO_UNIT lumo-centre lumo-centre-box@)
    configure_file(${PROJECT_SOURCE_DIR}/service/${LUMO_UNIT}.service.in ${PROJECT_BINARY_DIR}/${LUMO_UNIT}.service @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${LUMO_UNIT}.service DESTINATION ${CMAKE_INSTALL_DATADIR}/lumo/systemd)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN *.cpp PATTERN *.py)

set(LUMO_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/LumoDataMgr)

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/LumoDataMgrConfig.cmake.in
    ${PROJECT_BINARY_DIR}/LumoDataMgrConfig.cmake
    INSTALL_DESTINATION ${LUMO_PACKAGE_FOLDER})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/LumoDataMgrConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/LumoDataMgrConfig.cmake
    ${PROJECT_BINARY_DIR}/LumoDataMgrConfigVersion.cmake
    DESTINATION ${LUMO_PACKAGE_FOLDER})
install(EXPORT LumoDataMgrTargets NAMESPACE LumoDataMgr:: DESTINATION ${LUMO_PACKAGE_FOLDER})

# A .pc file finds the installation from its own place, so that a moved one still works.
cmake_path(SET LUMO_PC_FOLDER NORMALIZE ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${LUMO_PC_FOLDER} OUTPUT_VARIABLE LUMO_PC_PREFIX)
foreach(LUMO_PC LumoDataMgr LumoClient)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${LUMO_PC}.pc.in ${PROJECT_BINARY_DIR}/${LUMO_PC}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${LUMO_PC}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
