# Every target of the project links mrvtq5dk_options: one place for the language level,
# the warnings and the sanitizer switch.
add_library(mrvtq5dk_options INTERFACE)
target_compile_features(mrvtq5dk_options INTERFACE cxx_std_20)
target_compile_options(mrvtq5dk_options INTERFACE -Wall -Wextra)
target_compile_definitions(mrvtq5dk_options INTERFACE
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_NO_FOREACH
  QT_USE_QSTRINGBUILDER)

# address: AddressSanitizer + UndefinedBehaviorSanitizer; thread: ThreadSanitizer.
set(MRVTQ5DK_SANITIZER "" CACHE STRING
    "Sanitizer build: empty, 'address' (with undefined), 'undefined' or 'thread'")
if(MRVTQ5DK_SANITIZER STREQUAL "address")
  target_compile_options(mrvtq5dk_options INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer
                         -fno-sanitize-recover=undefined)
  target_link_options(mrvtq5dk_options INTERFACE -fsanitize=address,undefined)
elseif(MRVTQ5DK_SANITIZER STREQUAL "undefined")
  # Alone, for long fuzzing runs of properties that ASan would only slow down.
  target_compile_options(mrvtq5dk_options INTERFACE -fsanitize=undefined -fno-sanitize-recover=undefined)
  target_link_options(mrvtq5dk_options INTERFACE -fsanitize=undefined)
elseif(MRVTQ5DK_SANITIZER STREQUAL "thread")
  target_compile_options(mrvtq5dk_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(mrvtq5dk_options INTERFACE -fsanitize=thread)
elseif(NOT MRVTQ5DK_SANITIZER STREQUAL "")
  message(FATAL_ERROR "MRVTQ5DK_SANITIZER must be empty, 'address', 'undefined' or 'thread'")
endif()

# Fuzzing: every library is instrumented for libFuzzer's coverage; the fuzz targets link
# its driver. Needs clang.
option(MRVTQ5DK_FUZZ "Build the fuzz targets (clang only)" OFF)
if(MRVTQ5DK_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "MRVTQ5DK_FUZZ needs clang: configure with CXX=clang++")
  endif()
  target_compile_options(mrvtq5dk_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
