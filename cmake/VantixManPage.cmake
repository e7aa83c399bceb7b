# cmake -DHELP2MAN=... -DGZIP=... -DPROGRAM=<built program> [-DINCLUDE=<file.h2m>] -DOUTPUT=<page.1.gz> -P VantixManPage.cmake
#
# Writes the program's man page with help2man and compresses it as Debian
# wants it (gzip -9n: no name or time stamp, so the bytes repeat).

get_filename_component(folder ${PROGRAM} DIRECTORY)
get_filename_component(name ${PROGRAM} NAME)
string(REGEX REPLACE "\\.gz$" "" page ${OUTPUT})
get_filename_component(output_folder ${OUTPUT} DIRECTORY)
file(MAKE_DIRECTORY ${output_folder})

# Found on PATH, the program names itself without the build folder in its usage
# line. HOME=~ makes per-user defaults read ~/... instead of the builder's home.
set(ENV{PATH} "${folder}:$ENV{PATH}")
set(ENV{HOME} "~")
set(ENV{QT_QPA_PLATFORM} offscreen)
unset(ENV{XDG_DATA_HOME})
unset(ENV{QBCOMMON_ROOT})

set(include_option "")
if(INCLUDE)
    set(include_option --include=${INCLUDE})
endif()
execute_process(
    COMMAND ${HELP2MAN} --no-info --section=1 ${include_option} --output=${page} ${name}
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "help2man failed for ${name} (${result})")
endif()
execute_process(COMMAND ${GZIP} -9nf ${page} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "gzip failed for ${page} (${result})")
endif()
