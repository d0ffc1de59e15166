"""usage: finish_pages.py HTML
Takes away the pages of the guide's own folders, which are empty and which no page leads to, and fails
when another page has no content."""
import pathlib
import re
import sys

empty = []
for page in sorted(pathlib.Path(sys.argv[1]).glob("*.html")):
    text = page.read_text()
    content = re.search(r'<div class="contents">(.*)<!-- contents -->', text, re.S)
    if content and not re.sub(r"<[^>]*>|\s", "", content.group(1)):
        page.unlink() if page.name.startswith("dir_") else empty.append(page.name)
if empty:
    sys.exit(f"pages without content: {', '.join(empty)}")
