# `cpack -G DEB` in a build folder makes twinsift_VERSION_ARCH.deb from the install rules, for /usr.
# The libraries it needs are found by dpkg-shlibdeps; what the program loads at run time without
# linking it (Qt's SVG plugins for the toolbar images and icons) is listed by hand.
set(CPACK_PACKAGE_NAME twinsift)
set(CPACK_PACKAGE_VENDOR "The Twinsift developers")
set(CPACK_PACKAGE_CONTACT "The Twinsift developers <developers@twinsift.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "find duplicate files and folders and remove the spare copies")
# Debian wraps nothing: the lines stay under 80 columns as written.
string(CONCAT CPACK_PACKAGE_DESCRIPTION
    "Twinsift walks the folders you choose, compares files by their content and\n"
    "folders by what they hold, and groups the items that are the same. The spare\n"
    "copies can be moved to the trash, deleted, or replaced by links to the copy\n"
    "that is kept, from its window or from the command line.")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://twinsift.app/")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, hicolor-icon-theme")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-image-formats-plugins, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
