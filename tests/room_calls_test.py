"""Holds the table of docs/architecture.md, which room calls which, against the objects' symbols.

usage: room_calls_test.py NM DOCUMENT OBJECT...
"""
import collections
import re
import subprocess
import sys

nm, document, *objects = sys.argv[1:]
room_of = {path: re.search(r"(\w+)(?:/tables)?/[^/]+$", path)[1] for path in objects}
rooms = set(room_of.values())

home = {}  # a symbol: the room that defines it
uses = collections.defaultdict(set)  # a room: the symbols that it does not define in the same file
listing = subprocess.run([nm, "-A", "-P", *objects], check=True, capture_output=True, text=True)
for line in listing.stdout.splitlines():
    path, symbol, kind = re.match(r"(.*?\.o): (\S+) (\S)", line).groups()
    if kind == "U":
        uses[room_of[path]].add(symbol)
    elif kind in "TDBR":
        home[symbol] = room_of[path]

called = collections.defaultdict(dict)
for room, symbols in uses.items():
    for symbol in symbols:
        if home.get(symbol, room) != room:
            called[room].setdefault(home[symbol], symbol)

listed = {}
for row in re.findall(r"^\| `(\w+)/` \|(.*)\|$", open(document, encoding="utf-8").read(), re.M):
    if row[0] in rooms and row[1].count("|") == 1:
        listed[row[0]] = set(re.findall(r"`(\w+)/`", row[1]))

faults = [f"{room} is not in the table" for room in rooms - listed.keys()]
for room, targets in listed.items():
    faults += [f"{room} calls {to} ({called[room][to]}), which the table does not list"
               for to in called[room].keys() - targets]
    faults += [f"{room} does not call {to}, which the table lists"
               for to in targets - called[room].keys()]
print("\n".join(sorted(faults)) or f"{len(home)} symbols in {len(rooms)} rooms")
sys.exit(bool(faults))
