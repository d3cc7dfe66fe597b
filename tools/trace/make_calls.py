#!/usr/bin/env python3
"""Writes the table of calls, calls.def, out of the public headers.

usage: make_calls.py PROJECT > calls.def

One row for each function of cmake/exports.list, in its order: family, result, name, parameters and
the parameters' names. The C preprocessor and pycparser read the headers.
"""
import os
import subprocess
import sys

from pycparser import c_ast, c_generator, c_parser

GNU_WORDS = ["__attribute__(x)=", "__extension__=", "__alignof__(x)=8", "__float128=double",
             "__inline=", "__restrict=", "_Static_assert(x,y)="]


def declarations(project):
    """The functions that wexelxi.h declares, by name."""
    command = [os.environ.get("CC", "cc"), "-std=c11", "-E", "-P", "-I", project + "/include"]
    command += ["-D" + word for word in GNU_WORDS]
    text = subprocess.run(command + [project + "/include/wexelxi.h"], check=True,
                          capture_output=True, text=True).stdout
    tree = c_parser.CParser().parse(text)
    return {node.name: node.type for node in tree.ext
            if isinstance(node, c_ast.Decl) and isinstance(node.type, c_ast.FuncDecl)}


def exports(project):
    """Family and name of each export, in the order of the list."""
    family = ""
    with open(project + "/cmake/exports.list", encoding="ascii") as lines:
        for line in map(str.strip, lines):
            if line.startswith("# "):
                family = line[2:]
            elif line:
                yield family, line


def row(family, name, function):
    write = c_generator.CGenerator().visit
    parameters = function.args.params if function.args else []
    named = [p for p in parameters if isinstance(p, c_ast.Decl)]
    variadic = isinstance(parameters[-1], c_ast.EllipsisParam) if parameters else False
    result = write(function.type).removesuffix(name).strip()
    texts = [write(p) for p in named] + ["..."] * variadic
    return '%s("%s", %s, %s, (%s), (%s))' % ("VARIADIC" if variadic else "CALL", family, result, name,
                                             ", ".join(texts) or "void",
                                             ", ".join(p.name for p in named))


def main():
    project = sys.argv[1]
    functions = declarations(project)
    print("// Written by make_calls.py out of the public headers; a test holds it against them.")
    print("// clang-format off")
    for family, name in exports(project):
        if name in functions:
            print(row(family, name, functions[name]))


if __name__ == "__main__":
    main()
