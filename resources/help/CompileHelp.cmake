# Compiles the help of both languages into one file.
#
#   cmake -DSOURCE=resources/help -DOUTPUT=help.chm -DWORK=folder -DCHMCMD=chmcmd -P CompileHelp.cmake
#
# The contents have one branch for each language, the index lists the terms of both.

# The viewer on Windows reads contents and index in the code page of the file's language: this one
# has the letters of both.
set(language "0x0804 Chinese (PRC)")
set(code_page GBK)
set(languages zh en)
set(branch_zh "中文")
set(branch_en "English")

find_program(ICONV iconv REQUIRED)

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
file(COPY "${SOURCE}/start.html" DESTINATION "${WORK}")

set(head "<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML//EN\">\n<html>\n<body>\n<ul>\n")
set(tail "</ul>\n</body>\n</html>\n")

# entries_of VARIABLE FILE LANGUAGE: the items of a contents or index file, their pages in LANGUAGE's
# folder.
function(entries_of variable file language)
    file(READ "${file}" text)
    string(FIND "${text}" "<ul>" begin)
    string(FIND "${text}" "</ul>" end REVERSE)
    math(EXPR begin "${begin} + 4")
    math(EXPR length "${end} - ${begin}")
    string(SUBSTRING "${text}" ${begin} ${length} text)
    string(REPLACE "name=\"Local\" value=\"" "name=\"Local\" value=\"${language}/" text "${text}")
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# write_in_code_page FILE TEXT
function(write_in_code_page file text)
    file(WRITE "${file}.utf8" "${text}")
    execute_process(
        COMMAND "${ICONV}" -f UTF-8 -t ${code_page} "${file}.utf8"
        OUTPUT_FILE "${file}"
        RESULT_VARIABLE failed)
    if(failed)
        message(FATAL_ERROR "${file} has letters that are not in ${code_page}")
    endif()
    file(REMOVE "${file}.utf8")
endfunction()

set(contents "${head}")
set(index "${head}")
set(pages "start.html\n")
foreach(branch IN LISTS languages)
    file(COPY "${SOURCE}/${branch}" DESTINATION "${WORK}" PATTERN "orbisk.hh*" EXCLUDE)
    entries_of(entries "${SOURCE}/${branch}/orbisk.hhc" ${branch})
    string(APPEND contents
        "<li><object type=\"text/sitemap\"><param name=\"Name\" value=\"${branch_${branch}}\">"
        "<param name=\"Local\" value=\"${branch}/index.html\"></object>\n<ul>${entries}</ul>\n")
    entries_of(entries "${SOURCE}/${branch}/orbisk.hhk" ${branch})
    string(APPEND index "${entries}")
    file(GLOB_RECURSE files RELATIVE "${WORK}" "${WORK}/${branch}/*")
    list(SORT files)
    list(JOIN files "\n" files)
    string(APPEND pages "${files}\n")
endforeach()
write_in_code_page("${WORK}/help.hhc" "${contents}${tail}")
write_in_code_page("${WORK}/help.hhk" "${index}${tail}")

# compile_project RESULT LOG SEARCH: compiles all that is in the work folder; SEARCH is a line of the
# project file that asks for the full-text search, or empty.
function(compile_project result log search)
    file(WRITE "${WORK}/help.hhp" "[OPTIONS]
Compatibility=1.1 or later
Compiled file=help.chm
Contents file=help.hhc
Index file=help.hhk
Default topic=start.html
Default window=main
${search}Language=${language}
Title=Orbisk

[WINDOWS]
main=\"Orbisk\",\"help.hhc\",\"help.hhk\",\"start.html\",\"start.html\",,,,,0x63520,260,0x104e,[80,60,1080,780],,,,,,,0

[FILES]
${pages}")
    execute_process(
        COMMAND "${CHMCMD}" --no-html-scan help.hhp
        WORKING_DIRECTORY "${WORK}"
        RESULT_VARIABLE failed
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    set(${result} "${failed}" PARENT_SCOPE)
    set(${log} "${output}" PARENT_SCOPE)
endfunction()

compile_project(failed log "Full-text search=Yes\n")
if(NOT failed EQUAL 0)
    # Some texts without blanks between the words crash the compiler's search index.
    message(WARNING "Compiled without the full-text search; with it:\n${log}")
    compile_project(failed log "")
endif()
if(NOT failed EQUAL 0)
    message(FATAL_ERROR "${CHMCMD} failed:\n${log}")
endif()
file(COPY_FILE "${WORK}/help.chm" "${OUTPUT}")
