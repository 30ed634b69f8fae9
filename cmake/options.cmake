# Compiler options that every target of the project builds with.
add_library(vesk-options INTERFACE)
target_compile_options(vesk-options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${VESK_WERROR}>:-Werror>)
target_compile_definitions(vesk-options INTERFACE
  QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_FOREACH)

if(VESK_SANITIZE)
  add_compile_options(-fsanitize=${VESK_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VESK_SANITIZE})
  if(VESK_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
  if(VESK_SANITIZE MATCHES "thread")
    # What the sanitizer puts in between hides from the compiler that Qt's variants are initialized.
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()
if(VESK_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(VESK_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
