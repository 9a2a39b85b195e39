# SPDX-License-Identifier: Apache-2.0
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror
    # A designated initializer that leaves a member to its default is meant.
    -Wno-missing-field-initializers)
if(OSTREL_SANITIZE)
    add_compile_options(-fsanitize=${OSTREL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${OSTREL_SANITIZE})
endif()
if(OSTREL_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
# "signals" and "slots" are ordinary words.
add_compile_definitions(QT_NO_KEYWORDS)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 sees overlapping copies in the concatenation of two strings, which there are none in.
    add_compile_options(-Wno-restrict)
endif()
