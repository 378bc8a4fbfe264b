# Private to our own targets: who links the library does not inherit our warnings.
add_library(zelvar_warnings INTERFACE)
if(ZELVAR_DEV)
  target_compile_options(zelvar_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wcast-qual -Wcast-align
    -Wnon-virtual-dtor -Woverloaded-virtual -Wsuggest-override -Wextra-semi
    -Wformat=2 -Wundef -Wimplicit-fallthrough -Wmissing-declarations -Wdouble-promotion
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>)
  target_compile_definitions(zelvar_warnings INTERFACE
    QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # At -O3 this compiler takes copies inside std::string for ones of sizes that no string has. -O2, where warnings are
  # errors, has none of that.
  target_compile_options(zelvar_warnings INTERFACE -Wno-stringop-overflow)
endif()
# GIO's headers use "signals" as a name.
target_compile_definitions(zelvar_warnings INTERFACE QT_NO_KEYWORDS)
