#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the stand-in firmware images of this folder.

They have the names, the form and the signature lines of the firmware build's output, so that the library, the
simulated instrument and the update run end to end; what is in them is no program. Run it again at will: the bytes
depend on the file name alone.
"""
import hashlib
import pathlib
import zlib

# file name: (signature text, size in bytes)
IMAGES = {
    "Nimbrelle_Alder-Birch_2_2_Firmware.hex": ("ALDER_2_2", 4096),
    "Nimbrelle_Cedar_2_0_Firmware.hex": ("CEDAR_2_0", 3072),
    "Nimbrelle_Dune_2_0_Firmware.hex": ("DUNE_2_0", 3072),
    "Nimbrelle_Alder-Birch_2_3_Firmware.hex": ("ALDER_2_3", 4096),
    "Nimbrelle_Alder-Birch_2_3_ModB_Firmware.hex": ("ALDER_2_3B", 4096),
    "Nimbrelle_Ibis_Firmware.hex": ("IBIS_1_0", 5120),
    "Nimbrelle_Jay_Firmware.hex": ("JAY_1_0", 5120),
    "Nimbrelle_Heron_Firmware.hex": ("HERON_1_0", 5120),
    "Nimbrelle_Gale_Firmware.hex": ("GALE", 6136),  # ends within a record
    "Nimbrelle_Alder_2_4_Firmware.hex": ("ALDER_2_4", 4096),
    "Nimbrelle_Kestrel_2_x_Firmware.hex": ("KESTREL_2_x", 5120),
    "Nimbrelle_Alder_2_5_Firmware.hex": ("Alder_2_5", 4104),
}
PROGRAM_FLASH = 0x1D000000  # physical; the processor sees it at 0x9D000000
RECORD_BYTES = 16


def flash_bytes(name, size):
    # The library knows a stand-in by this text at its lowest address, and writes none into a real instrument.
    text = f"stand-in for {name}\0".encode()
    blocks = (hashlib.sha256(f"{name} {i}".encode()).digest() for i in range(size // 32 + 1))
    return (text + b"".join(blocks))[:size]


def record(address, kind, data=b""):
    body = bytes([len(data)]) + (address & 0xFFFF).to_bytes(2, "big") + bytes([kind]) + data
    return ":" + (body + bytes([-sum(body) & 0xFF])).hex().upper()


def image_lines(name, signature, size):
    flash = flash_bytes(name, size)
    yield record(0, 4, (PROGRAM_FLASH >> 16).to_bytes(2, "big"))
    for offset in range(0, size, RECORD_BYTES):
        yield record(PROGRAM_FLASH + offset, 0, flash[offset:offset + RECORD_BYTES])
    yield record(0, 1)
    yield f";{zlib.crc32(flash):08x}"  # what an instrument reports while it runs this image
    yield f";{signature}"


folder = pathlib.Path(__file__).parent
for file_name, (signature_text, flash_size) in IMAGES.items():
    lines = image_lines(file_name, signature_text, flash_size)
    (folder / file_name).write_text("".join(line + "\n" for line in lines))
