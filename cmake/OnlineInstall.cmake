# What cmake --install lays down: the module, the headers for hosts and platforms, the base library that their containers
# need, the in-process platform, the program, a CMake package, a pkg-config file, suppressions for leak checkers, and the pages
# of documentation, which the headers name. The installed files find each other by relative paths, so the folder can be moved.

include(CMakePackageConfigHelpers)

set(online_module_dir "${CMAKE_INSTALL_LIBDIR}/onlinemanager")
set(online_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/onlinemanager-sdk")
set(online_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/OnlineManager")
set(online_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(online_data_dir "${CMAKE_INSTALL_DATADIR}/onlinemanager")

install(TARGETS OnlineManager LIBRARY DESTINATION "${online_module_dir}")
install(TARGETS wbaselib ARCHIVE DESTINATION "${online_module_dir}")
install(FILES cmake/lsan.supp cmake/valgrind.supp DESTINATION "${online_data_dir}")

install(FILES README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs examples DESTINATION "${CMAKE_INSTALL_DOCDIR}")

install(DIRECTORY avcore common DESTINATION "${online_include_dir}" FILES_MATCHING PATTERN "*.h")
set(public_headers
    AVQualityInfo.h
    IMeetingTunnel.h
    IOnlineManager.h
    IPaasMdsClient.h
    IPaasOnline.h
    IPaasTMsg.h
    IReconnection.h
    IUserOnline.h
    InviteData.h
    OnlineTypes.h
    UserOnlineInfo.h
)
list(TRANSFORM public_headers PREPEND onlinemanager/)
install(FILES ${public_headers} DESTINATION "${online_include_dir}/onlinemanager")

# For pkg-config, in the order in which they need each other: static libraries know no other libraries.
set(online_libs -lwbaselib)
if(ONLINE_BUILD_HOST)
    list(PREPEND online_libs -lplatform)
    install(TARGETS platform ARCHIVE DESTINATION "${online_module_dir}")
    set(platform_headers Crowd.h Faults.h MonitoringService.h Platform.h PlatformOptions.h)
    list(TRANSFORM platform_headers PREPEND platform/)
    install(FILES ${platform_headers} DESTINATION "${online_include_dir}/platform")
    install(TARGETS onlinehost RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
list(JOIN online_libs " " online_libs)

configure_package_config_file(
    cmake/OnlineManagerConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/OnlineManagerConfig.cmake"
    INSTALL_DESTINATION "${online_cmake_dir}"
    PATH_VARS online_include_dir online_module_dir online_data_dir
    NO_CHECK_REQUIRED_COMPONENTS_MACRO
)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/OnlineManagerConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion
)
install(
    FILES
        "${CMAKE_CURRENT_BINARY_DIR}/OnlineManagerConfig.cmake"
        "${CMAKE_CURRENT_BINARY_DIR}/OnlineManagerConfigVersion.cmake"
    DESTINATION "${online_cmake_dir}"
)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${online_pkgconfig_dir}"
    OUTPUT_VARIABLE online_prefix
)
configure_file(cmake/onlinemanager.pc.in onlinemanager.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/onlinemanager.pc" DESTINATION "${online_pkgconfig_dir}")
