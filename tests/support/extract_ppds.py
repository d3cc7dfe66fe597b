#!/usr/bin/env python3
"""Writes PPDs out of the archives that drivers are, each of which is opened once.

usage: extract_ppds.py SAMPLE FOLDER

A line of SAMPLE has two numbers that the test knows, the name of an archive in the drivers' folder,
or a folder, and the name of a PPD in it; the folder "." is that of SAMPLE. The files are called
0.ppd, 1.ppd and so on, in the order of the lines. What is not installed is left out.
"""
import base64
import importlib.machinery
import importlib.util
import lzma
import os
import shutil
import sys

DRIVERS = "/usr/lib/cups/driver"


def open_archive(name):
    """Gives the index of an archive and its bytes."""
    loader = importlib.machinery.SourceFileLoader(
        name.replace("-", "_"), os.path.join(DRIVERS, name))
    module = importlib.util.module_from_spec(
        importlib.util.spec_from_loader(loader.name, loader))
    sys.dont_write_bytecode = True
    loader.exec_module(module)
    index = module.load()
    return index, lzma.decompress(base64.b64decode(index["ARCHIVE"]))


def main():
    sample, folder = sys.argv[1:]
    archives = {}
    with open(sample, encoding="ascii") as lines:
        rows = [line.rstrip("\n").split(maxsplit=3)[2:] for line in lines]
    for number, (source, name) in enumerate(rows):
        target = os.path.join(folder, f"{number}.ppd")
        if source == ".":
            source = os.path.dirname(os.path.abspath(sample))
        if source.startswith("/"):
            if os.path.exists(os.path.join(source, name)):
                shutil.copyfile(os.path.join(source, name), target)
            continue
        if source not in archives:
            installed = os.path.exists(os.path.join(DRIVERS, source))
            archives[source] = open_archive(source) if installed else ({}, b"")
        index, texts = archives[source]
        if name in index:
            start, length = index[name][:2]
            with open(target, "wb") as file:
                file.write(texts[start:start + length])


main()
