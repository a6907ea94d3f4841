#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the seeds that are not text, each into a file named after what it tries: make_corpus.py FOLDER

Text seeds lie in corpus/ as they are. The helpers write what FuzzInput.h reads.
"""
import pathlib
import struct
import sys


def u8(*values):
    return bytes(value & 0xFF for value in values)


def u16(value):
    return struct.pack("<H", value & 0xFFFF)


def u32(value):
    return struct.pack("<I", value & 0xFFFFFFFF)


def u64(value):
    return struct.pack("<Q", value)


def f32(*values):
    return struct.pack(f"<{len(values)}f", *values)


def number(value):
    """A double as FuzzInput::number() takes it."""
    return u8(21) + struct.pack("<d", value)


EXTREMES = {"zero": 0, "inf": 4, "-inf": 5, "nan": 6, "huge": 7, "-huge": 8, "tiny": 10}


def extreme(name):
    return u8(EXTREMES[name])


def text(content):
    """Bytes behind a length of one byte."""
    return u8(len(content)) + content


def long_text(content):
    """Bytes behind a length of two bytes."""
    return u16(len(content)) + content


def frame(kind, channel, payload=b"", length=None):
    return u8(0xEE, 0xFF, kind, channel) + u16(len(payload) if length is None else length) + payload


def crc16(data):
    crc = 0
    for byte in data:
        crc ^= byte << 8
        for _ in range(8):
            crc = (crc << 1 ^ 0x1021 if crc & 0x8000 else crc << 1) & 0xFFFF
    return crc


def hid_frame(body, crc=None):
    content = body + u16(crc16(body) if crc is None else crc)
    return b"\x01" + b"".join(b"\x10" + u8(b) if b in (1, 4, 16) else u8(b) for b in content) + b"\x04"


def report(content):
    return content.ljust(64, b"\xff")


# A handler's steps: positions in HandlerTarget's table of notifications, then what a client does.
STEPS = ["main-dc", "gale-dc", "ac", "ac-22", "ac-36", "ac-50", "ac-64", "ac-head", "ac-done", "node-begin", "node-done",
         "data-begin", "done", "paused", "resumed", "sd-header", "sd-data", "tare-current", "tare-voltage", "config",
         "meta", "status", "ack", "error-text", "overcurrent", "range-up", "appended", "time", "block-end", "ground",
         "any", "odd-size", "load", "start", "manual", "mode", "link", "read-sd", "stop", "ranges"]


def step(name, channel=0, payload=b""):
    return u8(STEPS.index(name), channel) + payload


def node(kind, step_number=1, members=1, volts=0.0, downsample=1, flags=0x30):
    return u8(kind, flags, members) + number(volts) + u8(step_number, downsample)


def loaded(*nodes, channel=0):
    return step("load", channel, u8(len(nodes)) + b"".join(nodes))


def begin(index, channel=0):
    return step("node-begin", channel, u64(0) + u16(index))


def main_dc(voltage=100.0, current=50.0, tick=10**8, charge=0.5, ranges=(0, 0, 0, 0)):
    return f32(1.0, voltage, current, 2.0) + struct.pack("<dQhhI", charge, tick, 3, 4, 0x640000) + u8(*ranges)


def gale_dc(counter=0, voltage=100.0, current=50.0, tick=87500000, charge=1000, ranges=(0, 0)):
    return (u64(tick) + f32(current, voltage, 16000.0) + u8(0, counter, *ranges) + struct.pack("<hhq", 3, 4, charge))


def main_ac(samples, frequency=100.0, period=1e-3, floats=False, external=True, claimed=None):
    half = len(samples) // 2
    head = u64(10**8) + f32(frequency, period) + u32(half if claimed is None else claimed)
    head += u8((1 if floats else 0) | (2 if external else 0), 1, 0, 0, 0) + struct.pack("<hh", 1, 2)
    return head + (f32(*samples) if floats else struct.pack(f"<{len(samples)}h", *samples))


def gale_head(samples, frequency=100.0, rate=1000.0, mode=0, summed=1):
    return u64(87500000) + u32(samples) + f32(frequency) + u32(0) + f32(rate) + u16(mode) + u16(summed) + u8(0, 0) + \
        struct.pack("<hh", 1, 2)


WAVE = [100, 195, 259, 281, 259, 195, 100, 4, -59, -81, -59, 4] * 4
PACKET_22 = struct.pack("<ii", 100, -100) + struct.pack("<14b", *[1, -1] * 7)
PACKET_36 = struct.pack("<ii", 100, -100) + struct.pack("<14h", *[300, -300] * 7)
PACKET_50 = struct.pack("<ii", 100, -100) + b"\xff\xff\xff" * 14
PACKET_64 = struct.pack("<16i", *[2**31 - 1, -2**31] * 8)
SD_HEADER = u32(0x30303031)


def sd_stream(content, claimed=None, chunk=100, magic=None):
    header = (b"\x01" + magic if magic else b"\x00") + u32(len(content) if claimed is None else claimed)
    return header + b"".join(text(content[i:i + chunk]) for i in range(0, len(content), chunk))


def imported(*files, **options):
    """Into a folder whose name is good."""
    return b"\x01" + sd_stream(b"".join(name + b"," + rows + b"\x1c" for name, rows in files), **options)


TABLE = b"f,mag,phase\n1,0.5,-1\n100,0.9,-2\n"
MAIN_TAG = u8(0)
GALE_TAG = u8(1)
NO_TAG = u8(2)


def record(model, tag, values, rest=b""):
    return u8(model) + tag + u8(len(values)) + b"".join(values) + rest


def calibration_tail(sample=b"", volts=1.0, numbers=()):
    """What follows a record: no board, two tares, a sample, set points, ranges, amplitudes."""
    tares = b"\x00" + b"\x00" + number(0.001) + b"\x00" + number(-0.001)
    setpoint = u8(1, 1) + number(volts) + u32(1000)
    values = list(numbers) or [0.01, 0.02, 1.0, -1.0, 1000.0, 2048.0]
    return tares + sample.ljust(44, b"\0") + setpoint + b"".join(number(v) for v in values) + u8(1, 2, 3, 0)


def reply(kind, payload=b""):
    """One right answer to a question: text or record, as the question has it."""
    return u8(1) + u8(kind) + payload


ANSWER, CARRIED = 1, 2
SILENCE = u8(0)


def hardware(model, name):
    return (u8(model) + name).ljust(64, b"\0")


def handshake(model, channels, rest, name=b"Alder-0042\n", checksum_of=None):
    checksum = u8(1, CARRIED, model if checksum_of is None else checksum_of)
    return (SILENCE + reply(ANSWER, text(b"")) + reply(ANSWER, hardware(model, name)) + reply(ANSWER, u8(channels)) +
            checksum + rest)


def flash_record(tag, size=376):
    return reply(ANSWER, text((tag).ljust(min(size, 255), b"\0")))


PING = frame(65, 0)


def pieces(content, size=16):
    """A port's bytes, each piece with its length in front: FuzzSerialBootloader reads a byte, and 1 to 16 bytes."""
    return b"".join(u8(len(content[i:i + size]) - 1) + content[i:i + size] for i in range(0, len(content), size))


def bootloader(hardware_text=b"Gale-7\n", channels=4, length=None, confirmed=3):
    """All replies of an instrument with its boards; the first number of replies to records comes."""
    boards = channels // 2
    replies = PING + frame(69, 0, u8(18) + hardware_text.ljust(64, b"\0"), length) + PING + frame(70, 0, u8(channels))
    for command in [18, 19] + [20] * confirmed:
        replies += b"".join(frame(command, board) for board in range(boards))
    return replies


def element(index, values):
    """An element of the client's catalogue, by its position in the alphabet; values in the order of its properties."""
    return u8(index) + b"".join(values)


SEEDS = {
    "FuzzFrameStream": {
        "two-frames": u32(1) + frame(66, 0, b"abc") + frame(67, 1),
        "stray-ee-in-front": u32(2) + b"\xee" + frame(66, 0, b"abc"),
        "garbage-between": u32(3) + frame(66, 0) + b"\x00\xee\x00\xff" + frame(67, 1, b"x"),
        "magic-in-payload": u32(4) + frame(66, 0, frame(67, 1, b"inner")),
        "false-magic-swallows": u32(5) + frame(66, 0, length=300) + frame(67, 1, b"behind"),
        "length-of-65535": u32(6) + frame(66, 255, b"short", length=65535),
        "long-payload": u32(7) + frame(103, 3, bytes(range(256)) * 4),
        "header-cut-short": u32(8) + frame(66, 0)[:5],
        "signed-type": u32(9) + frame(0x80, 0) + frame(0xFF, 255),
    },
    "FuzzHidReports": {
        "body-of-special-bytes": b"\x00" + b"\x01\x04\x10" * 10,
        "body-of-one-report": b"\x00" + bytes(range(32, 90)),
        "empty-body": b"\x00",
        "crc-needs-escape": b"\x00\x03\x8a",
        "reply-in-one-report": b"\x01" + report(hid_frame(b"\x04\x12\x34")),
        "reply-in-two-reports": b"\x01" + report(hid_frame(b"\x01" * 40)) + report(b""),
        "reply-with-wrong-crc": b"\x01" + report(hid_frame(b"\x02", crc=1)),
        "reply-too-short-for-its-command": b"\x01" + report(hid_frame(b"\x01\x05") + hid_frame(b"\x04")),
        "reply-of-nothing-but-a-crc": b"\x01" + report(hid_frame(b"")) + report(b"\x01\x04\x01\x33\x04"),
        "escape-at-the-end": b"\x01" + b"\x01".ljust(63, b"a") + b"\x10" + report(b"\x04"),
        "frame-begins-twice": b"\x01" + report(b"\x01abc" + hid_frame(b"\x02")),
    },
    "FuzzSerialBootloader": {
        "whole-update": pieces(bootloader()),
        "byte-by-byte": pieces(bootloader(), 1),
        "silent": b"",
        "hardware-record-is-empty": pieces(bootloader(length=0)),
        "hardware-record-claims-65535": pieces(bootloader(length=65535)),
        "hardware-text-of-255": pieces(bootloader(hardware_text=b"x" * 255)),
        "no-boards": pieces(bootloader(channels=1)),
        "channels-below-zero": pieces(bootloader(channels=0x80)),
        "reply-cut-in-the-header": pieces(bootloader()[:3]),
        "record-refused": pieces(bootloader(confirmed=1) + frame(21, 0)),
        "another-command-answers": pieces(PING + frame(70, 0, b"\x04")),
    },
    "FuzzAcRecords": {
        "delta-8": u8(0) + PACKET_22,
        "delta-16": u8(0) + PACKET_36,
        "delta-24": u8(0) + PACKET_50,
        "delta-32-wraps": u8(0) + PACKET_64,
        "delta-of-odd-length": u8(0) + PACKET_64[:49],
        "delta-empty": u8(0),
        "main-integers": u8(1) + main_ac(WAVE),
        "main-floats": u8(1) + main_ac(WAVE, floats=True),
        "main-own-converter": u8(1) + main_ac(WAVE, external=False),
        "main-claims-one-more": u8(1) + main_ac(WAVE, claimed=25),
        "main-claims-two-billion": u8(1) + main_ac(WAVE, claimed=0x7FFFFFFF),
        "main-claims-below-zero": u8(1) + main_ac(WAVE, claimed=-24),
        "main-one-sample": u8(1) + main_ac([5, 7]),
        "main-two-samples": u8(1) + main_ac([5, 7, 9, 11]),
        "main-head-alone": u8(1) + main_ac([]),
        "main-head-cut-short": u8(1) + main_ac([])[:20],
        "main-not-a-number": u8(1) + main_ac([float("nan"), 1.0, float("inf"), 2.0], floats=True),
        "main-period-of-zero": u8(1) + main_ac(WAVE, period=0.0),
        "main-frequency-at-half-the-rate": u8(1) + main_ac(WAVE, frequency=500.0),
        "main-frequency-of-zero": u8(1) + main_ac(WAVE, frequency=0.0),
        "gale-one-channel": u8(2, 0, 0) + gale_head(8) + text(PACKET_64),
        "gale-multi-tone": u8(2, 0, 0) + gale_head(8, mode=2) + text(PACKET_64),
        "gale-pair-in-series": u8(2, 1, 1) + (gale_head(8) + text(PACKET_64)) * 2,
        "gale-fewer-words-than-claimed": u8(2, 0, 0) + gale_head(4000) + text(b"\x01" * 7),
        "gale-sums-of-none": u8(2, 0, 0) + gale_head(8, summed=0) + text(PACKET_64),
        "gale-rate-of-zero": u8(2, 0, 0) + gale_head(8, rate=0.0) + text(PACKET_64),
        "stored-transform": u8(3) + main_ac([]) + f32(1, 0, 1, 0, 2, 2),
        "stored-transform-too-short": u8(3) + main_ac([]) + f32(1, 0, 1),
    },
    "FuzzMainHandler": {
        "idle-sample": step("main-dc", 0, main_dc()),
        "experiment-with-samples": loaded(node(5)) + step("start") + begin(0) + step("data-begin", 0, u64(5)) +
        step("main-dc", 0, main_dc()) * 3 + step("node-done", 0, bytes(12)) + step("done", 0, bytes(8) + u8(1)),
        "node-index-beyond-list": loaded(node(5), node(1, 2)) + step("start") + begin(65535),
        "step-number-below-zero": loaded(node(5, step_number=-5)) + step("start") + begin(0),
        "step-numbers-with-a-gap": loaded(node(5), node(5, step_number=120)) + step("start") + begin(1) + begin(0),
        "node-of-no-type": loaded(node(250)) + begin(0),
        "impedance-point": loaded(node(16)) + step("start") + begin(0) + step("ac", 0, text(main_ac(WAVE))) +
        step("ac-done"),
        "point-without-records": step("start") + loaded(node(16)) + step("start") + step("ac-done"),
        "channel-it-has-not": step("main-dc", 200, main_dc()) + step("ac-done", 4) + begin(0, 255),
        "samples-of-extreme-ranges": step("main-dc", 1, main_dc(ranges=(255, 255, 255, 255))),
        "samples-of-the-other-line": step("gale-dc", 0, gale_dc()) + step("ac-head", 0, gale_head(8)),
        "tables-from-the-card": step("read-sd") +
        step("sd-header", 0, (SD_HEADER + u32(len(TABLE) + 12)).ljust(256, b"\0")) +
        step("sd-data", 0, text(b"Range0.csv," + TABLE + b"\x1c")) + step("main-dc", 0, main_dc()),
        "card-header-of-negative-size": step("sd-header", 0, (SD_HEADER + u32(-1)).ljust(256, b"\0")),
        "card-data-without-header": step("sd-data", 0, text(b"a,b\x1c")),
        "alarms": step("overcurrent") + step("error-text", 3, text(b"too hot\0\x1b[2J")) + step("range-up", 0, u8(9)),
        "acknowledgements-of-all": b"".join(step("ack", 0, u8(command, -3)) for command in range(80, 128)),
        "status-word-with-stored-data": step("status", 0, u16(0xFFFF)) + step("meta", 0, bytes(56)),
        "empty-payloads-of-all": b"".join(step("any", 0, u8(kind) + text(b"")) for kind in range(-8, 119)),
        "ranges-of-a-manual-run": step("manual") + step("ranges") + step("main-dc", 0, main_dc()),
    },
    "FuzzGaleHandler": {
        "idle-sample": step("gale-dc", 0, gale_dc()),
        "experiment-with-samples": loaded(node(5)) + step("start") + begin(0) + step("data-begin", 0, u64(5)) +
        step("gale-dc", 0, gale_dc()) * 3 + step("node-done") + step("done", 0, bytes(8) + u8(1)),
        "group-of-two": step("link", 0, u8(1, 0)) + loaded(node(5)) + step("start") + begin(0) + begin(0, 1) +
        step("data-begin", 0, u64(5)) + step("gale-dc", 0, gale_dc(7)) + step("gale-dc", 1, gale_dc(7)) +
        step("done", 1, bytes(9)) + step("done", 0, bytes(9)),
        "pair-in-series": step("link", 2, u8(3, 1)) + loaded(node(5), channel=2) + step("start", 2) +
        step("data-begin", 2, u64(5)) + step("gale-dc", 2, gale_dc(7)) + step("gale-dc", 3, gale_dc(7)),
        "batch": loaded(node(16)) + step("start") + begin(0) + step("ac-head", 0, gale_head(16)) +
        step("ac-22", 0, PACKET_22) + step("ac-50", 0, PACKET_50),
        "batch-of-a-group": step("link", 0, u8(1, 0)) + loaded(node(16)) + step("start") +
        step("ac-head", 0, gale_head(8)) + step("ac-head", 1, gale_head(8)) + step("ac-64", 0, PACKET_64) +
        step("ac-36", 1, PACKET_36),
        "batch-without-header": step("ac-64", 0, PACKET_64) + step("ac-64", 0, PACKET_64),
        "batch-of-nothing": step("ac-head", 0, gale_head(0)) + step("ac-64", 0, PACKET_64),
        "batch-claims-four-billion": step("ac-head", 0, gale_head(0xFFFFFFFF)) + step("ac-64", 0, PACKET_64),
        "batch-claims-millions-for-ten-packets": step("ac-head", 0, gale_head(1 << 26)) + loaded(node(16)) +
        step("start") + begin(0) + step("ac-22", 0, PACKET_22) * 10,
        "multi-tone-batch": step("ac-head", 0, gale_head(8, mode=2)) + step("ac-64", 0, PACKET_64),
        "tare-of-no-range": step("tare-current", 0, f32(1.0) + u8(200)) + step("tare-voltage", 0, f32(1.0) + u8(4)) +
        step("tare-current", 0, f32(float("nan")) + u8(0)) + step("gale-dc", 0, gale_dc()),
        "board-of-65535-ranges": step("config", 3, b"\xff" * 288) + step("gale-dc", 3, gale_dc(ranges=(255, 255))) +
        step("manual", 3) + step("ranges", 3),
        "channel-it-has-not": step("gale-dc", 200, gale_dc()) + step("config", 255, bytes(288)),
        "empty-payloads-of-all": b"".join(step("any", 0, u8(kind) + text(b"")) for kind in range(-8, 119)),
    },
    "FuzzHandshake": {
        "main-line-is-admitted": handshake(35, 2, reply(ANSWER, text(b"2.5.1")) + flash_record(b"400v") * 2),
        "cycler-is-admitted": handshake(18, 2, reply(ANSWER, text(b"1.0")) + flash_record(b"vc07") * 2 +
                                        reply(ANSWER, bytes(288)), name=b"Gale-7\n"),
        "odd-count-of-cycler-channels": handshake(18, 3, reply(ANSWER, text(b"1.0")) + flash_record(b"vc07") * 3 +
                                                  reply(ANSWER, bytes(288)) * 2),
        "name-without-line-feed": handshake(35, 1, reply(ANSWER, text(b"")), name=b"x" * 63),
        "name-without-end-in-256-bytes": SILENCE + reply(ANSWER, text(b"")) +
        u8(2, 0, 69, 0) + long_text(b"y" * 256) + u8(0, 69, 0) + long_text(b"z" * 300),
        "name-that-leads-elsewhere": handshake(35, 1, b"", name=b"../../home\n"),
        "echo": reply(ANSWER, text(b"")),
        "silent": b"",
        "board-of-a-few-bytes": handshake(18, 2, reply(ANSWER, text(b"1.0")) + flash_record(b"vc07") * 2 +
                                          u8(2, 3) + long_text(bytes(20)) + u8(3) + long_text(bytes(400))),
        "no-model": handshake(200, 1, b""),
        "firmware-of-another-model": handshake(35, 1, b"", checksum_of=18),
        "no-channels": handshake(35, 0, reply(ANSWER, text(b"2.5.1"))),
        "fifteen-channels": handshake(35, 15, reply(ANSWER, text(b"2.5.1")) + flash_record(b"400v") * 3),
        "calibration-of-nothing": handshake(35, 1, reply(ANSWER, text(b"v")) + reply(ANSWER, text(b""))),
        "calibration-of-another-channel": handshake(35, 1, reply(ANSWER, text(b"v")) + u8(1, 0, 68, 7) + long_text(b"400v")),
        "answers-to-nobody": SILENCE + u8(3) + b"".join(u8(0, kind, 0) + long_text(b"") for kind in (69, 70, 65)),
    },
    "FuzzCalibrationRecords": {
        "main-line": record(35, MAIN_TAG, [number(0.5)] * 93, calibration_tail(main_dc())),
        "main-line-all-zero": record(35, MAIN_TAG, [extreme("zero")] * 93, calibration_tail(main_dc())),
        "main-line-not-a-number": record(35, MAIN_TAG, [extreme("nan")] * 93, calibration_tail(main_dc())),
        "main-line-infinite": record(35, MAIN_TAG, [extreme("inf")] * 93, calibration_tail(main_dc())),
        "main-line-cut-short": record(35, MAIN_TAG, [number(0.5)] * 3, calibration_tail(main_dc())),
        "main-line-of-no-model": record(255, MAIN_TAG, [number(0.5)] * 93, calibration_tail(main_dc())),
        "main-line-high-currents": record(32, MAIN_TAG, [number(2.0)] * 93, calibration_tail(main_dc(), volts=40.0)),
        "ranges-that-do-not-exist": record(35, MAIN_TAG, [number(0.5)] * 93,
                                           calibration_tail(main_dc(ranges=(255, 255, 255, 255)))),
        "cycler": record(18, GALE_TAG, [number(0.5)] * 184, calibration_tail(gale_dc())),
        "cycler-without-gains": record(18, GALE_TAG, [extreme("zero")] * 184, calibration_tail(gale_dc())),
        "cycler-huge": record(18, GALE_TAG, [extreme("huge")] * 184, calibration_tail(gale_dc())),
        "cycler-charge-at-its-end": record(18, GALE_TAG, [number(0.5)] * 184, calibration_tail(gale_dc(charge=-2**63))),
        "unknown-tag": record(35, NO_TAG, [number(1.0)] * 10, calibration_tail(main_dc())),
        "infinite-set-points": record(35, MAIN_TAG, [number(0.5)] * 93,
                                      calibration_tail(main_dc(), float("inf"), [float("nan")] * 6)),
    },
    "FuzzTableFiles": {
        "sweep-ascending": u8(0, 0) + number(1.0) + number(10.0) + number(1e9) + TABLE,
        "sweep-descending": u8(0, 0) + number(1.0) + number(10.0) + number(0.1) + b"h\n100,0.9,-2\n10,0.7,-1\n1,0.5,0\n",
        "sweep-first-order": u8(0, 1) + number(1.0) + number(10.0) + number(50.0) + TABLE,
        "sweep-reciprocal": u8(0, 2) + number(1.0) + number(10.0) + number(50.0) + TABLE,
        "sweep-short-rows": u8(0, 0) + number(1.0) + number(10.0) + number(50.0) + b"h\n1\n10,2\n,\n100,1,1\n",
        "sweep-not-sorted": u8(0, 1) + number(1.0) + number(10.0) + number(3.0) + b"h\n1,1,1\n90,1,1\n2,1,1\n100,1,1\n",
        "sweep-of-no-numbers": u8(0, 1) + number(1.0) + number(1.0) + extreme("nan") + b"h\nnan,inf,x\n-1,1e999,-\n",
        "sweep-of-one-row": u8(0, 1) + number(1.0) + number(1.0) + extreme("inf") + b"h\n1,1,1\n",
        "sweep-heading-alone": u8(0, 0) + number(2.0) + number(1.0) + number(1.0) + b"f,mag,phase",
        "sweep-line-of-1200": u8(0, 0) + number(1.0) + number(1.0) + number(2.0) + b"h\n" + b"1" * 1200 + b",2\n3,4,5\n",
        "converter-of-few-codes": u8(1, 3) + number(1.0) + number(4095.0) + number(4096.0) + number(2.5) + b"0\n2\n3\n",
        "converter-not-a-number": u8(1, 2) + extreme("nan") + extreme("inf") + extreme("-huge") + b"nan\ninf\n\nx,y\n",
        "capacitance-of-two-powers": u8(2) + number(1000.0) + number(100.0) + b"0.01\n12.5\n",
        "capacitance-infinite": u8(2) + number(1000.0) + number(100.0) + b"1e308\n1e308\ninf\n",
        "capacitance-of-nothing": u8(2) + number(1000.0) + extreme("nan"),
    },
    "FuzzSdCard": {
        "two-tables": imported((b"Range0.csv", TABLE), (b"Range1.csv", TABLE)),
        "padded-rows": imported((b"a.csv", b"f,m,,,\n1,2,,,\n")),
        "name-of-the-parent": imported((b"..", TABLE), (b".", TABLE)),
        "name-leads-up": imported((b"../x.csv", TABLE), (b"../../../x.csv", TABLE)),
        "name-is-absolute": imported((b"/tmp/nimbrelle-x.csv", TABLE)),
        "name-leads-through-the-folder": imported((b"a/../../x.csv", TABLE)),
        "name-holds-nul": imported((b"a.csv\0/../b", TABLE), (b"\0", TABLE)),
        "name-is-no-utf-8": imported((b"\xff\xfe.csv", TABLE), (b"\xc0\xae\xc0\xae/x", TABLE)),
        "name-is-empty": imported((b"", TABLE)),
        "name-too-long": imported((b"n" * 255, TABLE)),
        "name-looks-like-a-resource": imported((b":x", TABLE), (b":", TABLE)),
        "name-is-hidden": imported((b".x", TABLE)),
        "one-name-twice": imported((b"a.csv", TABLE), (b"a.csv", b"")),
        "rows-of-unlike-width": imported((b"a.csv", b"f,m\n1\n1,2,3\n")),
        "no-separator": b"\x01" + sd_stream(b"a.csv" + b"1" * 100),
        "more-than-announced": imported((b"a.csv", TABLE), claimed=5),
        "less-than-announced": imported((b"a.csv", TABLE), claimed=5000),
        "announces-nothing": imported((b"a.csv", TABLE), claimed=0),
        "announces-below-zero": imported((b"a.csv", TABLE), claimed=-1),
        "wrong-magic": imported((b"a.csv", TABLE), magic=u32(1)),
        "instrument-named-like-the-parent": b"\x00" + text(b"..") + sd_stream(b"a.csv,1\x1c"),
        "instrument-named-like-a-path": b"\x00" + text(b"../../x") + sd_stream(b"a.csv,1\x1c"),
        "instrument-with-a-good-name": b"\x00" + text(b"Alder-7") + sd_stream(b"Range0.csv," + TABLE + b"\x1c"),
        "instrument-without-a-name": b"\x00" + text(b"") + sd_stream(b"a.csv,1\x1c"),
    },
    "FuzzExperimentElements": {
        f"{kind}-of-{values}": u8(35, 0) + element(index, [source] * 24) + u16(1)
        for index, kind in enumerate(["constant-current", "constant-potential", "constant-power", "constant-resistance",
                                      "cyclic-voltammetry", "current-sweep", "potential-sweep", "differential-pulse",
                                      "galvanostatic-impedance", "potentiostatic-impedance", "mott-schottky",
                                      "normal-pulse", "open-circuit", "square-wave", "staircase", "stepped-current",
                                      "stepped-voltage"])
        for values, source in {"zeros": extreme("zero"), "ones": u8(2), "not-a-number": extreme("nan"),
                               "infinity": extreme("inf"), "tiny": extreme("tiny"), "tenths": number(0.1)}.items()
    } | {
        "staircase-of-negative-times": bytes.fromhex(
            "23000e6d61cc6f000202020221 00ff01000000020302 0e020b00000002020100"),
    },
}


def main():
    folder = pathlib.Path(sys.argv[1])
    for target, seeds in SEEDS.items():
        (folder / target).mkdir(parents=True, exist_ok=True)
        for name, content in seeds.items():
            (folder / target / name).write_bytes(content)


if __name__ == "__main__":
    main()
