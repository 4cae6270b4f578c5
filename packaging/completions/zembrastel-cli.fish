# Completion for fish. What can be typed is read from the program's own help, so that it is never out of date.

# The commands before the cursor, as words.
function __zembrastel_cli_chain
    set -l help (zembrastel-cli --help)
    set -l chain
    set -l option
    for word in (commandline -opc)[2..]
        if test -n "$option" # its value
            set option
        else if printf '%s\n' $help | string match -qr -- "^  $word [A-Z]"
            set option $word
        else if printf '%s\n' $help | __zembrastel_cli_commands | string match -q -- "$word"\t'*'
            set -a chain $word
            set help (zembrastel-cli $chain --help)
        end
    end
    printf '%s\n' $chain
end

# NAME, tab, DESCRIPTION of each command that a help text lists.
function __zembrastel_cli_commands
    sed -n '/^Commands:$/,/^$/s/^  \([a-z][a-z-]*\)  *\(.*\)/\1\t\2/p'
end

# The --state option that was typed, with its value.
function __zembrastel_cli_state
    set -l words (commandline -opc)
    set -l at (contains -i -- --state $words)
    and test (count $words) -gt $at
    and printf '%s\n' --state $words[(math $at + 1)]
end

function __zembrastel_cli_profiles
    zembrastel-cli (__zembrastel_cli_state) --json profile list 2>/dev/null | sed -n 's/.*"name":"\(\([^"\\\\]\|\\\\.\)*\)".*/\1/p'
end

function __zembrastel_cli_words
    set -l help (zembrastel-cli (__zembrastel_cli_chain) --help)
    set -l commands (printf '%s\n' $help | __zembrastel_cli_commands)
    if set -q commands[1]
        printf '%s\n' $commands
    else if string match -qr '^Usage:.*\[OPTIONS\] \[?(NAME|PROFILE)' -- $help
        __zembrastel_cli_profiles
    end
end

# Both the program's own options and those of the command.
function __zembrastel_cli_help
    zembrastel-cli --help
    zembrastel-cli (__zembrastel_cli_chain) --help
end

function __zembrastel_cli_options
    __zembrastel_cli_help | sed -n 's/^  \(-h,\)\{0,1\}\(--[a-z-]*\)\( [A-Z]*[.]*\)\{0,1\}  *\(.*\)/\2\t\4/p' | sort -u
end

# Is a command or a profile to come? Not where an option waits for its value: there, files are offered.
function __zembrastel_cli_wants_word
    set -l last (commandline -opc)[-1]
    not string match -q -- '-*' (commandline -ct)
    and not __zembrastel_cli_help | string match -qr -- "^  $last [A-Z]"
    and test -n "$(__zembrastel_cli_words)"
end

complete -c zembrastel-cli -n __zembrastel_cli_wants_word -f -k -a '(__zembrastel_cli_words)'
complete -c zembrastel-cli -n 'string match -q -- "-*" (commandline -ct)' -f -a '(__zembrastel_cli_options)'
