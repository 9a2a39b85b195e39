# SPDX-License-Identifier: Apache-2.0
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(OSTREL_SANITIZE)
    add_compile_options(-fsanitize=${OSTREL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${OSTREL_SANITIZE})
endif()
