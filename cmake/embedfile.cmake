# cmake -DOUTPUT=... -DNAMESPACE=... -DFILES=path;path -P embedfile.cmake: a C++ source that holds the files.
# For radar.html it defines, in the namespace, std::string_view radarHtml().
set(text "#include <string_view>\n\nnamespace ${NAMESPACE} {\n")
foreach(file ${FILES})
  get_filename_component(base ${file} NAME_WE)
  get_filename_component(extension ${file} LAST_EXT)
  string(SUBSTRING ${extension} 1 1 first)
  string(SUBSTRING ${extension} 2 -1 rest)
  string(TOUPPER ${first} first)
  file(READ ${file} hex HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${hex}")
  string(APPEND text "\nstd::string_view ${base}${first}${rest}();\n"
                     "std::string_view ${base}${first}${rest}() {\n"
                     "    static constexpr char content[] = {${bytes}};\n"
                     "    return {content, sizeof(content)};\n}\n")
endforeach()
string(APPEND text "\n} // namespace ${NAMESPACE}\n")
file(WRITE ${OUTPUT} "${text}")
