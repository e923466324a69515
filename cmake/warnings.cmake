# One set of warnings for every target; an exception is made where it is needed, with its reason.
add_library(vanta_warnings INTERFACE)
target_compile_options(vanta_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
# g++ 12 sees overlapping copies in any "text" + std::string (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(vanta_warnings INTERFACE -Wno-restrict)
endif()
if(VANTA_WERROR)
  target_compile_options(vanta_warnings INTERFACE -Werror)
endif()

# Nothing here reads errno or traps on floating-point exceptions; NaN and infinity keep their meaning.
add_compile_options(-fno-math-errno -fno-trapping-math)

if(VANTA_SANITIZE)
  add_compile_options(-fsanitize=${VANTA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VANTA_SANITIZE})
endif()
