# Prints the n-th block of a language in a document: awk -v language=c -v n=1 -f guide_block.awk DOCUMENT
$0 == "```" language { count++; inside = 1; next }
/^```/ { inside = 0 }
inside && count == n
