# What speeds the build up where it is there. Nothing here changes what is built.

# ccache: paths below the source folder count as relative, so that clones of one state share results.
find_program(ZELVAR_CCACHE ccache)
if(ZELVAR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER env "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=1
    "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime" "${ZELVAR_CCACHE}")
endif()

find_program(ZELVAR_MOLD mold)
if(ZELVAR_MOLD)
  add_link_options(-fuse-ld=mold)
endif()

if(ZELVAR_SANITIZE)
  add_compile_options(-fsanitize=${ZELVAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZELVAR_SANITIZE})
endif()
