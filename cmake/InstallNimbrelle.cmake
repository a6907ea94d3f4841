# SPDX-License-Identifier: MIT
# What a user of the installed package gets: public headers, the shared library, and the ways to find them.
include(CMakePackageConfigHelpers)

install(TARGETS nimbrelle EXPORT NimbrelleTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nimbrelle
    FILES_MATCHING PATTERN "*.h")
install(EXPORT NimbrelleTargets NAMESPACE Nimbrelle:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Nimbrelle)

configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/NimbrelleConfig.cmake.in
    ${CMAKE_BINARY_DIR}/NimbrelleConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Nimbrelle)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/NimbrelleConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/NimbrelleConfig.cmake ${CMAKE_BINARY_DIR}/NimbrelleConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Nimbrelle)

# Written at install time, so that "cmake --install --prefix" is what it names.
install(CODE "
    set(PROJECT_DESCRIPTION \"${PROJECT_DESCRIPTION}\")
    set(PROJECT_VERSION \"${PROJECT_VERSION}\")
    set(CMAKE_INSTALL_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
    set(CMAKE_INSTALL_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
    configure_file(\"${CMAKE_SOURCE_DIR}/packaging/nimbrelle.pc.in\" \"${CMAKE_BINARY_DIR}/nimbrelle.pc\" @ONLY)")
install(FILES ${CMAKE_BINARY_DIR}/nimbrelle.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Not the library folder of the architecture: udev looks in this one alone.
install(FILES ${CMAKE_SOURCE_DIR}/packaging/71-nimbrelle.rules DESTINATION lib/udev/rules.d)

# What people read and begin with; the schema where editors can be pointed to it.
install(FILES ${CMAKE_SOURCE_DIR}/docs/experiment.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/nimbrelle)
install(FILES ${CMAKE_SOURCE_DIR}/README.md ${CMAKE_SOURCE_DIR}/LICENSE ${CMAKE_SOURCE_DIR}/THIRD_PARTY.md
        ${CMAKE_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
    FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "man" EXCLUDE)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
