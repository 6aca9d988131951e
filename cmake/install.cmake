# Installation: libraries, public and generated headers, the programs, a CMake package
# (Qorvex::Sql, ::Model, ::SQLite, ::ODBC, ::Widgets) and a pkg-config file for qorvex_sql.
# Components: Runtime (shared libraries, programs), Development (headers, static libraries,
# package files); the Designer plugin installs as DesignerPlugin.
include(CMakePackageConfigHelpers)

set(QORVEX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Qorvex)
get_property(layers GLOBAL PROPERTY QORVEX_LAYERS)
set(QORVEX_COMPONENTS)
foreach(layer ${layers})
  get_target_property(component ${layer} EXPORT_NAME)
  list(APPEND QORVEX_COMPONENTS ${component})
  # One export set per component, so that a program asking for Sql needs no Qt.
  install(TARGETS ${layer} EXPORT Qorvex${component}Targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime
            NAMELINK_COMPONENT Development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
  install(EXPORT Qorvex${component}Targets NAMESPACE Qorvex:: DESTINATION ${QORVEX_CMAKE_DIR}
          COMPONENT Development)
endforeach()

set(header_folders core scanner ast syntax parser metadata model)
if(TARGET qorvex_widgets)
  list(APPEND header_folders designer)
endif()
foreach(folder ${header_folders})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qorvex/${folder}
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qorvex COMPONENT Development
          FILES_MATCHING PATTERN "*.h")
endforeach()
install(DIRECTORY ${QORVEX_GENERATED_INCLUDE}/qorvex DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT Development FILES_MATCHING PATTERN "*.h")

foreach(program qorvex-sql qorvex-designer)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
  endif()
endforeach()

# Until 1.0 a minor version may break the interface.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
set(QORVEX_SHARED ${BUILD_SHARED_LIBS})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QorvexConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QorvexConfig.cmake INSTALL_DESTINATION ${QORVEX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QorvexConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY ${compatibility})
install(FILES ${PROJECT_BINARY_DIR}/QorvexConfig.cmake
              ${PROJECT_BINARY_DIR}/QorvexConfigVersion.cmake
        DESTINATION ${QORVEX_CMAKE_DIR} COMPONENT Development)

# The pkg-config file finds the prefix from its own place, so the tree can be moved.
file(RELATIVE_PATH QORVEX_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
if(BUILD_SHARED_LIBS)
  set(QORVEX_PC_CFLAGS "")
else()
  set(QORVEX_PC_CFLAGS " -DQORVEX_SQL_STATIC_DEFINE")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/qorvex_sql.pc.in ${PROJECT_BINARY_DIR}/qorvex_sql.pc
               @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qorvex_sql.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
