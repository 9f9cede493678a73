# Before the files go into the package: none is younger than the package says that it is, so that
# the same source gives the same package.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
                            -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
                    COMMAND_ERROR_IS_FATAL ANY)
endif()
