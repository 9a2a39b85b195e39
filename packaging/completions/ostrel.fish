# SPDX-License-Identifier: Apache-2.0
# Completion of ostrel's arguments in fish.
complete -c ostrel -f
complete -c ostrel -l background -d 'start with the panel closed'
complete -c ostrel -l readings -d 'print one reading as a line of JSON'
complete -c ostrel -l bar-state -d 'print whether the item is in the bar'
complete -c ostrel -l testbed -xa 'show hide toggle' -d 'do that with the panel near the corner of the display'
complete -c ostrel -l self-test -d 'check the program off screen'
complete -c ostrel -l snapshot -rF -d 'the snapshot of the self-test'
complete -c ostrel -a 'ostrel://show ostrel://open ostrel://hide ostrel://close ostrel://toggle' -d address
