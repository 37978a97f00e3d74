#!/usr/bin/env python3
"""Makes a loadable extension of a shared library: appends the footer by which DuckDB knows it.

    sign.py LIBRARY EXTENSION --version VELSCORE --interface DUCKDB --platform PLATFORM

The footer is a custom section as WebAssembly has them, with eight fields of 32 bytes in reverse order,
and room for a signature, which stays empty: the extension is loaded with allow_unsigned_extensions.
"""
import argparse
import pathlib

NAME = b"duckdb_signature"
FIELD = 32
SIGNATURE = 256


def field(text):
    """A field of the footer."""
    raw = text.encode()
    if len(raw) > FIELD:
        raise SystemExit(f"sign.py: '{text}' is longer than {FIELD} bytes")
    return raw.ljust(FIELD, b"\0")


def length(number):
    """A number of WebAssembly's binary format, seven bits a byte."""
    out = b""
    while number > 0x7F:
        out += bytes([number & 0x7F | 0x80])
        number >>= 7
    return out + bytes([number])


def footer(version, interface, platform):
    """The section: its kind, its size, its name, and the fields with the signature."""
    fields = [
        "",
        "",
        "",
        "C_STRUCT",  # the stable interface
        version,
        interface,  # the oldest that will do
        platform,
        "4",  # of the footer itself
    ]
    content = b"".join(field(text) for text in fields) + b"\0" * SIGNATURE
    rest = length(len(NAME)) + NAME + length(len(content)) + content
    return b"\0" + length(len(rest)) + rest


def main():
    """Reads the arguments and writes the extension."""
    parser = argparse.ArgumentParser()
    parser.add_argument("library", type=pathlib.Path)
    parser.add_argument("extension", type=pathlib.Path)
    parser.add_argument("--version", required=True)
    parser.add_argument("--interface", required=True)
    parser.add_argument("--platform", required=True)
    given = parser.parse_args()
    given.extension.write_bytes(
        given.library.read_bytes() + footer(given.version, given.interface, given.platform)
    )


if __name__ == "__main__":
    main()
