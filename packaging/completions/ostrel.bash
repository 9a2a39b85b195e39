# SPDX-License-Identifier: Apache-2.0
# Completion of ostrel's arguments in bash, which loads this file through its package bash-completion.
_ostrel() {
    local cur prev
    # A colon parts words in bash, and addresses have one.
    _get_comp_words_by_ref -n : cur prev
    COMPREPLY=()
    case $prev in
    --testbed)
        mapfile -t COMPREPLY < <(compgen -W "show hide toggle" -- "$cur")
        ;;
    --snapshot)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        ;;
    *)
        mapfile -t COMPREPLY < <(compgen -W "--background --readings --bar-state --testbed --self-test --snapshot
            ostrel://show ostrel://open ostrel://hide ostrel://close ostrel://toggle" -- "$cur")
        __ltrim_colon_completions "$cur"
        ;;
    esac
}
complete -F _ostrel ostrel
