# The report page: packages from npm, pinned in a lock file, and files compiled into the program as they are.

set(STUDYSTATS_REPORT AUTO CACHE STRING "Report pages in the command: ON (an error without npm), OFF, or AUTO")
set_property(CACHE STUDYSTATS_REPORT PROPERTY STRINGS AUTO ON OFF)

# studystats_npm(SOURCE FOLDER REASON): the packages that SOURCE/package-lock.json pins, in FOLDER/node_modules. They are
# fetched once for each content of the lock file. REASON is empty, or says why they are not there.
function(studystats_npm source folder reason)
  find_program(NPM npm)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source}/package-lock.json)
  if(NOT NPM)
    set(${reason} "npm is not installed" PARENT_SCOPE)
    return()
  endif()
  set(${reason} "" PARENT_SCOPE)
  file(SHA256 ${source}/package-lock.json wanted)
  if(EXISTS ${folder}/fetched)
    file(READ ${folder}/fetched fetched)
    if(fetched STREQUAL wanted)
      return()
    endif()
  endif()
  file(REMOVE_RECURSE ${folder}/node_modules ${folder}/fetched)
  file(COPY ${source}/package.json ${source}/package-lock.json ${source}/.npmrc DESTINATION ${folder})
  message(STATUS "Fetching the packages of ${source}/package-lock.json")
  execute_process(COMMAND ${NPM} ci --loglevel=error --prefer-offline --fetch-retries=1 --fetch-timeout=30000
                  WORKING_DIRECTORY ${folder} RESULT_VARIABLE status OUTPUT_FILE ${folder}/npm.log
                  ERROR_FILE ${folder}/npm.log TIMEOUT 300)
  if(status EQUAL 0)
    file(WRITE ${folder}/fetched ${wanted})
  else()
    set(${reason} "npm could not fetch its packages, see ${folder}/npm.log" PARENT_SCOPE)
  endif()
endfunction()

# studystats_embed(OUTPUT NAMESPACE [NAME FILE]...): writes a source that defines NAMESPACE::NAME(), the content of FILE
# as a std::string_view, and NAMESPACE::named(), which finds it by the name of its file: "page" for page.html. The
# assembler copies the bytes, so that size costs the compiler nothing.
function(studystats_embed output namespace)
  set(text "// Made by studystats_embed.\n#include <string_view>\n\n")
  set(functions "")
  set(named "")
  set(files "")
  while(ARGN)
    list(POP_FRONT ARGN name file)
    set(label studystats_embedded_${name})
    string(APPEND text "__asm__(\".pushsection .rodata\\n${label}: .incbin \\\"${file}\\\"\\n${label}_end:\\n\"\n"
                       "        \".popsection\\n\");\nextern \"C\" {\n"
                       "extern const char ${label}[] __attribute__((visibility(\"hidden\")));\n"
                       "extern const char ${label}_end[] __attribute__((visibility(\"hidden\")));\n}\n")
    string(APPEND functions "std::string_view ${name}() { return {${label}, static_cast<std::size_t>(${label}_end - "
                            "${label})}; }\n")
    cmake_path(GET file STEM stem)
    string(APPEND named "  if (name == \"${stem}\") return ${name}();\n")
    list(APPEND files ${file})
  endwhile()
  file(CONFIGURE OUTPUT ${output} CONTENT "${text}\nnamespace ${namespace} {\n${functions}\n\
std::string_view named(std::string_view name) {\n${named}  return {};\n}\n}\n" @ONLY)
  # The names that the assembler gives would be lost to a program that is optimised as a whole.
  set_source_files_properties(${output} PROPERTIES OBJECT_DEPENDS "${files}" COMPILE_OPTIONS -fno-lto)
endfunction()
