# SPDX-License-Identifier: Apache-2.0
# Of an optimised build: what keeps the program's own pages few. It waits in the background most of its time, and none of
# its code there is shared with another program. The preset optimises for size, which halves the code and costs the views
# nothing, since the toolkit does their work; the rooms that compute are optimised for speed.
include(CheckLinkerFlag)
set(OSTREL_COMPUTING ostrel_design ostrel_history)
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections)
# Relocations as a bitmap: less to read at each start.
check_linker_flag(CXX -Wl,-z,pack-relative-relocs OSTREL_HAS_RELATIVE_RELOCATIONS)
if(OSTREL_HAS_RELATIVE_RELOCATIONS)
    add_link_options(-Wl,-z,pack-relative-relocs)
endif()
