#!/usr/bin/env python3
"""Writes kernels/exptable.h, the table of the exponential function of a block.

For k from 0 to 127, with H = 2^(k/128) rounded to a double:

    tail[k]   what the rounding left out, relative to H: 2^(k/128) / H - 1, as a double
    scale[k]  the bits of H less k << 45, so that adding (k + 128 n) << 45 gives 2^n H

Needs mpmath: scripts/make-exp-table.py > kernels/exptable.h
"""
import struct

from mpmath import mp, mpf

SIZE = 128


def bits(number):
    return struct.unpack("<Q", struct.pack("<d", number))[0]


def rows():
    mp.prec = 200
    for k in range(SIZE):
        power = mpf(2) ** (mpf(k) / SIZE)
        rounded = float(power)
        yield bits(float(power / mpf(rounded) - 1)), (bits(rounded) - (k << 45)) % 2**64


def array(name, words):
    lines = [f"alignas(64) constexpr uint64_t {name}[{SIZE}] = {{"]
    for i in range(0, SIZE, 4):
        lines.append("    " + " ".join(f"0x{word:016x}," for word in words[i : i + 4]))
    return "\n".join(lines + ["};"])


tails, scales = zip(*rows())
print(f"""// Made by scripts/make-exp-table.py; not to be edited.
#ifndef VELSCORE_KERNELS_EXPTABLE_H
#define VELSCORE_KERNELS_EXPTABLE_H

#include <cstdint>

namespace MCVelscore_850::kernels {{

{array("kExpTail", tails)}

{array("kExpScale", scales)}

}}  // namespace MCVelscore_850::kernels

#endif""")
