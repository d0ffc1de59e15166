"""Prints the layout of the library's classes, one fact a line. Run by gdb on INSTANCE, a shared
object with debug information that includes every header and instantiates the templates; the virtual
tables of the others are read from LIBRARY, as callers meet them."""
import collections
import glob
import re
import subprocess


def lines(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()


def slots(path):
    """The virtual operations of each class in the order of its table, after the type information."""
    code, tables, targets = collections.defaultdict(set), {}, {}
    for line in lines("nm", "-SC", path):
        symbol = re.match(r"(\w{16}) (\w{16}) [a-zA-Z] (vtable for )?(.*?)(?: \[clone .*)?$", line)
        if symbol and symbol.group(3):
            tables[symbol.group(4)] = [int(n, 16) for n in symbol.groups()[:2]]
        elif symbol:
            code[int(symbol.group(1), 16)].add(symbol.group(4))
    for line in lines("readelf", "-rW", path):
        moved = re.match(r"(\w{16}) +\w+ R_\w+_RELATIVE +(\w+)", line)
        if moved:
            targets[int(moved.group(1), 16)] = int(moved.group(2), 16)

    def operation(name, place):
        """Operations with the same instructions share an address: the class's own is meant."""
        found = sorted(code[targets.get(place)])
        own = [candidate for candidate in found if candidate.startswith(name + "::")]
        return (own or found or ["pure"])[0]

    return {name: [operation(name, place) for place in range(at + 16, at + size, 8)]
            for name, (at, size) in tables.items()}


def names():
    for header in glob.glob(HEADERS + "/portinglayer/*.h"):
        text = open(header).read()
        for template, name in re.findall(
                r"^(template.*\n)?(?:class|struct) (?:PORTINGLAYER_EXPORT )?(P\w+)[ \w:]*\{", text, re.M):
            yield name + ("<int>" if template else "")


tables = {**slots(INSTANCE), **slots(LIBRARY)}
for name in sorted(names()):
    kind = gdb.lookup_type(name)
    print(f"class {name} size {kind.sizeof} align {kind.alignof}")
    for field in kind.fields():
        if hasattr(field, "bitpos"):
            what = "base" if field.is_base_class else "member"
            print(f"  {what} at {field.bitpos // 8}: {field.name} ({field.type.sizeof} bytes)")
    for number, slot in enumerate(tables.get(name, [])):
        print(f"  slot {number} {slot}")
