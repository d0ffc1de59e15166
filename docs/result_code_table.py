"""usage: result_code_table.py HEADERS OUTPUT
Writes the page with one row for each result code: its value, what it means, which operations return
it. All of it is taken from the comments of the public headers."""
import collections
import re
import sys

CODE = re.compile(r'^ +CODE\((PERR_\w+), (-?\d+), "(.*)"\)', re.M)
headers, output = sys.argv[1:]
codes = CODE.findall(open(f"{headers}/result_codes.h").read())
codes_of = {}  # operation -> the codes it returns, those of all its forms


def stated(comment, scope, above):
    """The codes that a comment gives: in its own words, or by pointing at another operation."""
    found = [code for line in re.findall(r"@return\s+((?:PERR_\w+[, ]*)+)", comment)
             for code in re.findall(r"PERR_\w+", line)]
    for name in re.findall(r"[Cc]odes (?:as|of) `([\w:]+)", comment):
        found += codes_of.get(name) or codes_of.get(f"{scope}::{name}") or sys.exit(
            f"{scope}: no operation {name} to take the codes from")
    if re.search(r"^As (above|the form with an id)", comment, re.M):
        found += above
    return found


def read(path):
    scope, comment, above = "", "", []
    for line in open(path):
        text = re.match(r"\s*/// ?(.*)", line)
        opened = re.match(r"(?:class|struct) (?:PORTINGLAYER_EXPORT )?(\w+)[^;]*$", line)
        operation = re.match(r"[^(]*?(operator[^\s(]+|[~\w]+)\(", line)
        if text:
            comment += text.group(1) + "\n"
        elif opened:
            scope = opened.group(1)
            comment = ""
        elif line.startswith("};"):
            scope = ""
        elif operation and comment:
            name = f"{scope}::{operation.group(1)}" if scope else operation.group(1)
            above = stated(comment, scope, above)
            codes_of[name] = codes_of.get(name, []) + above
            comment = ""
        elif not line.strip():
            comment = ""


# Each header after those that it includes, so that what is pointed at has been read.
order = re.findall(r"<portinglayer/(\w+\.h)>", open(f"{headers}/portinglayer.h").read())
for header in order:
    read(f"{headers}/{header}")

returned_by = collections.defaultdict(dict)
for operation, found in codes_of.items():
    for code in found:
        returned_by[code][operation] = None
strays = set(returned_by) - {name for name, _, _ in codes}
if strays:
    sys.exit(f"no such result code: {', '.join(sorted(strays))}")


def operations(code):
    if code == "PERR_OK":
        return "every operation that returns a code"
    by_class = collections.defaultdict(list)
    for name in returned_by[code]:
        scope, _, operation = name.rpartition("::")
        by_class[scope].append(operation)
    return "<br>".join(f"{scope}: {', '.join(found)}" if scope else ", ".join(found)
                       for scope, found in by_class.items()) or "none"


with open(output, "w") as page:
    page.write("# Table of result codes {#page_result_code_table}\n\n"
               "| Code | Value | Meaning | Returned by |\n|:--|--:|:--|:--|\n")
    for name, value, meaning in codes:
        page.write(f"| #{name} | {value} | {meaning} | {operations(name)} |\n")
