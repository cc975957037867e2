# cpack makes one Debian package of what install.cmake and others install: library, headers, jar, tool.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libalgorithm)
set(CPACK_PACKAGE_CONTACT "The libAlgorithm maintainers <maintainers@libalgorithm.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "photo effects: library, headers and command-line tool")
set(CPACK_PACKAGE_DESCRIPTION
"Conversion and rotation of raw camera frames, photo effects, blends and blurs,
with a C++ and a Java interface, and the tool camera-effects for JPEG files.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libvips42")  # WebP, TIFF, HEIC and AVIF; loaded when one comes
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "g++, pkg-config, bash-completion, default-jre-headless")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Its dependencies are those of its binaries, including the log library in Debian's separate folder.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${ALGORITHM_LOG_RUNPATH}")
include(CPack)
