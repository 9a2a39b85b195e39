# SPDX-License-Identifier: Apache-2.0
# Of an optimised build without sanitizers: what makes a fault of memory harder to use, and no path of the machine that
# built it, so that two machines get the same bytes.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()
add_compile_options(-ffile-prefix-map=${PROJECT_BINARY_DIR}=build -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
    -fstack-protector-strong -fstack-clash-protection)
check_cxx_compiler_flag(-fcf-protection OSTREL_HAS_CF_PROTECTION)
if(OSTREL_HAS_CF_PROTECTION)
    add_compile_options(-fcf-protection)
endif()
# Some compilers set a level of their own, and a second one is an error.
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
