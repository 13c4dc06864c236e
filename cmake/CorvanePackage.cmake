# The Debian package, made by cpack in the build folder. What the programs are linked with is found
# by dpkg-shlibdeps; what they only load or read is named here.

# Whoever builds a package answers for it: as Debian's own tools have it, the name and address in the
# environment, else the account on this machine.
if(DEFINED ENV{DEBEMAIL} AND DEFINED ENV{DEBFULLNAME})
  set(builder "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
else()
  cmake_host_system_information(RESULT host QUERY FQDN)
  set(account "$ENV{USER}")
  if(account STREQUAL "")
    set(account root)
  endif()
  set(builder "${account} <${account}@${host}>")
endif()
set(CORVANE_PACKAGE_CONTACT "${builder}" CACHE STRING
    "Who answers for the packages that are made here")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_CONTACT "${CORVANE_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "portfolios of shares, funds and cash with exact ledgers")
set(CPACK_PACKAGE_DESCRIPTION
"Corvane keeps the books of a private investor: portfolios of shares, funds and
cash in several currencies, adjusted cost bases, realized gains, values day by
day. It reads the statements of many brokers and banks, draws charts of
equities, and tries trading strategies out on past prices. A desktop program
and one for the console work on the same files.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt loads the plugin for X11 by itself, and curl the certificates of the system.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, ca-certificates")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, hicolor-icon-theme, fonts-dejavu-core")

include(CPack)
