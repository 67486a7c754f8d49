# What only the library as it is installed is built with: small, and hardened.

include(CheckCXXSourceCompiles)

# quorvance_release_objects(<target>)
#
# Small code everywhere but where a checkpoint spends its time. More sources made fast win a checkpoint
# 3 % and cost 120 kB.
function(quorvance_release_objects target)
  target_compile_options(${target} PRIVATE
    $<$<CONFIG:Release>:-Os -ffunction-sections -fdata-sections -fstack-protector-strong
      -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  set(base ${PROJECT_SOURCE_DIR}/src/base)
  set(hotSources ${base}/json.cpp ${base}/json_parser.cpp ${base}/json_writer.cpp
    ${base}/record.cpp ${base}/text.cpp)
  set_property(SOURCE ${hotSources} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
endfunction()

# quorvance_release_library(<target>)
#
# Drops what nothing needs, exports what is the library's own alone, resolves every symbol while it
# is loaded and is then read-only.
function(quorvance_release_library target)
  set(versionScript ${PROJECT_SOURCE_DIR}/cmake/quorvance_exports.map)
  target_link_options(${target} PRIVATE $<$<CONFIG:Release>:LINKER:--gc-sections
    LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:--version-script=${versionScript}>)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${versionScript})
  # A loader before glibc 2.36 refuses packed relocations.
  set(CMAKE_REQUIRED_LINK_OPTIONS LINKER:-z,pack-relative-relocs)
  check_cxx_source_compiles([[
    #include <features.h>
    #if !__GLIBC_PREREQ(2, 36)
    #error
    #endif
    int main() {}
  ]] QUORVANCE_PACKS_RELOCATIONS)
  if(QUORVANCE_PACKS_RELOCATIONS)
    target_link_options(${target} PRIVATE $<$<CONFIG:Release>:LINKER:-z,pack-relative-relocs>)
  endif()
endfunction()
