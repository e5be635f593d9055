# Turns the headers' comments into those that Doxygen reads. A comment above declarations stands for
# all of them up to the next empty line or comment; one behind a declaration is that one's. What needs
# no words gets the words that go without saying: constructors without arguments, copying,
# destructors, and accessors whose whole body stands beside them.
function flush_group() {
    if (grouped) print indent "///@}"
    grouped = 0
}
function in_words(line) {
    if (line ~ /\/\/|^ *(#|[{}]|public:|private:|protected:|friend |enum |class |struct |typedef |template)/) return ""
    if (line ~ /~[A-Za-z_]+\(\)/) return "Destroys the object."
    if (line ~ /^ *(explicit )?[A-Za-z_]+\(\);/) return "An empty one."
    if (line ~ /(const [A-Za-z_]+& other|[A-Za-z_]+& other)\)( = [a-z]+)?;/) return "Copies."
    if (line ~ /= default;$/) return "As the language makes it."
    if (line ~ /\) (const )?(override )?\{.*\}$/) return "As its body says."
    if (line ~ /override;/) return "As the base's."
    if (line ~ /^ [^()]*[A-Za-z0-9_\]];$/) return "As its name says."
    return ""
}
{
    line = $0
    # Without a word about the file, its functions would not count.
    if (line == "#pragma once") { print "/** @file */"; next }
    if (line ~ /^\/\* /) sub(/^\/\*/, NR == 1 ? "/** @file\n" : "/**", line)
    match(line, /^ */); indent = substr(line, 1, RLENGTH)
    if (line ~ /^ *\/\/ ?/ ) {
        if (!comment) flush_group()
        sub(/\/\/ ?/, "", line)
        # Nothing in them is a command, a tag or a link.
        gsub(/[\\<>@#%&]/, "\\\\&", line)
        print indent "///" (line ~ /^ *$/ ? "" : " ") substr(line, RLENGTH + 1)
        comment = 1
        next
    }
    if (line ~ /^};|^(public|private|protected):/) flush_group()
    if (line ~ /^ *$/) { flush_group(); comment = 0; print; next }
    if (comment && line ~ /[;({]/ && line !~ /^ *(class |struct |enum |#|template|typedef )/) {
        print indent "///@{"
        grouped = 1
    }
    words = in_words(line)
    if (words != "" && !comment && (!grouped || words ~ /^(Copies|Destroys)/)) print indent "/// " words
    comment = 0
    if (line ~ /[^ ] +\/\/ /) sub(/\/\/ /, "///< ", line)
    print line
}
END { flush_group() }
