include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS vexar vexar_static vexar_cpp EXPORT VexarTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Headers keep the source layout under include/vexar so that "vexar/Vexar.h",
# "type/vexar.h" and "platform/dds/topic.h" resolve with -I<prefix>/include/vexar.
foreach(header ${VEXAR_PUBLIC_HEADERS})
  get_filename_component(dir ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vexar/${dir})
endforeach()
# The one C++ header that applications include; the other .hpp are internal.
install(FILES ${PROJECT_SOURCE_DIR}/vexar/vexar.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vexar/vexar)

install(EXPORT VexarTargets NAMESPACE Vexar:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Vexar)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VexarConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VexarConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Vexar)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VexarConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VexarConfig.cmake ${PROJECT_BINARY_DIR}/VexarConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Vexar)

# The .pc file finds its prefix from its own place, so --prefix at install
# time (not only at configure time) is honoured.
file(RELATIVE_PATH VEXAR_PC_PREFIX_FROM_PCDIR "/root/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/root")
configure_file(${PROJECT_SOURCE_DIR}/cmake/vexar.pc.in ${PROJECT_BINARY_DIR}/vexar.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vexar.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES ${PROJECT_SOURCE_DIR}/etc/cyclonedds-loopback.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/vexar)
