# Completion of zconf for fish. The program says what can follow; fish itself completes the names of files.

function __zconf_answer
    set -l words (commandline --current-process --tokenize --cut-at-cursor)
    command zconf __complete $words[2..] (commandline --current-token --cut-at-cursor) 2>/dev/null
end

function __zconf_completes_files
    set -l answer (__zconf_answer)
    test "$answer[1]" = files
end

function __zconf_words
    set -l answer (__zconf_answer)
    # Of "--option=value" the answer is the value alone.
    set -l prefix (string match --regex -- '^--[^=]*=' (commandline --current-token --cut-at-cursor))
    for line in $answer[2..]
        printf '%s%s\n' "$prefix" $line
    end
end

complete --command zconf --no-files --condition 'not __zconf_completes_files'
complete --command zconf --force-files --condition __zconf_completes_files
complete --command zconf --arguments '(__zconf_words)'
