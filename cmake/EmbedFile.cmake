# fringix_embed(TARGET FILE FUNCTION HEADER [NAMESPACE]): compiles a file into a target, as the function of the namespace, fringix::tool
# unless given, that HEADER declares.
function(fringix_embed target file function header)
  set(namespace fringix::tool)
  if(ARGC GREATER 4)
    set(namespace ${ARGV4})
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n
namespace @namespace@ {
namespace {\n
constexpr char content[] = {
${bytes}};\n
}  // namespace\n
std::string_view ${function}() { return {content, sizeof content}; }\n
}  // namespace fringix::tool\n" @ONLY)
  target_sources(${target} PRIVATE ${source})
endfunction()
