# The installed program is the staged folder as it stands, with a launcher that starts it there.
include(GNUInstallDirs)
install(DIRECTORY ${ORBISK_STAGE_DIR}/ DESTINATION ${CMAKE_INSTALL_LIBDIR}/orbisk USE_SOURCE_PERMISSIONS)
