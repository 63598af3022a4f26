# includes.awk <arrows> <includes>: the includes that go against the arrows; exits with 1 when there are any.
# Arrows are lines "folder <path>" and "arrow <from> <to>", includes are grep's "<file>:<line>:#include "<file>"".

function room(path,    folder, longest) {
    longest = ""
    for (folder in folders) {
        if (index(path, folder "/") == 1 && length(folder) > length(longest)) {
            longest = folder
        }
    }
    return longest
}

# Everything that a chain of arrows leads to, with a list of its own instead of a recursion.
function close_over(from,    waiting, last, here, edge) {
    waiting[last = 1] = from
    while (last > 0) {
        here = waiting[last--]
        for (edge in arrows) {
            split(edge, ends, SUBSEP)
            if (ends[1] == here && !((from, ends[2]) in reachable)) {
                reachable[from, ends[2]] = 1
                waiting[++last] = ends[2]
            }
        }
    }
}

$1 == "folder" && FNR == NR { folders[$2] = 1; next }
$1 == "arrow" && FNR == NR { arrows[$2, $3] = 1; next }
FNR == 1 {
    for (folder in folders) {
        close_over(folder)
        if ((folder, folder) in reachable) {
            print "the arrows lead from " folder " back to it"
            wrong = 1
        }
    }
}
{
    split($0, parts, ":")
    split($0, quoted, "\"")
    from = room(parts[1])
    to = room(quoted[2])
    if (to == "") {
        print parts[1] ":" parts[2] ": \"" quoted[2] "\" is not in a folder of the drawing"
        wrong = 1
    } else if (from != to && !((from, to) in reachable)) {
        print parts[1] ":" parts[2] ": " from " must not include " to " (" quoted[2] ")"
        wrong = 1
    }
    count++
}
END {
    if (count == 0) {
        print "there are no includes to look at"
        wrong = 1
    }
    exit wrong
}
