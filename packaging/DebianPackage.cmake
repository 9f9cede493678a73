# Debian's rules for what `cpack` makes: tools/make-package runs it.
# The revision, in packaging/changelog too, leaves 1 and above to Debian itself.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0zemo1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zemo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The ZEMO authors <zemo@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "tool that holds one sound, plays it and rewrites it")
set(CPACK_PACKAGE_DESCRIPTION "ZEMO opens one mono sound, plays it once with a fade at either end, shows its
level, rewrites it through four sheets (resampling, amplitude and phase
modulation, even harmonics), takes the last rewrite back, and saves it,
sample for sample.
.
This package has the program with the window and its headless twin for
scripts, zemo-batch.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/SettleTimes.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the programs are linked with, found in them. What Qt and cubeb load while they run, those
# packages depend on themselves: the X11 platform, a font, OpenGL, the clients of the sound servers.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "pipewire-pulse | pulseaudio | jackd")

include(CPack)
