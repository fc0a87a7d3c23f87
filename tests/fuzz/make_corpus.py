#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz harnesses into tests/fuzz/corpus/NAME/.

Each seed is one of the system's own cases in the input format its harness reads (see the
comment at the top of each fuzz_NAME.cpp): a running engine's frames, a tool's session,
the I/O board's bring-up and stream, stored settings good and damaged, texts of every
kind, a stick's insertion and eject, firmware files. Run it after changing a format; the
files themselves are committed. Inputs that found a fault are kept beside these, named
fault-*, and are not touched here.
"""
import os
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def write(harness, name, data):
    folder = os.path.join(HERE, "corpus", harness)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as f:
        f.write(bytes(data))


# ---- CAN -------------------------------------------------------------------------------

CAN_EFF, CAN_RTR, CAN_ERR = 0x80000000, 0x40000000, 0x20000000


def frame(can_id, data, dlc=None, port=0, show=True):
    data = bytes(data)
    body = struct.pack("<IB3x", can_id, len(data) if dlc is None else dlc) + data.ljust(8, b"\0")[:8]
    return bytes([(4 if show else 0) | port]) + body


def ticks(n):
    return bytes([0x80 | (n - 1)])


def held(n):
    """n x 16 ticks with the main loop held up."""
    return bytes([0x90 | (n - 1)])


def keys(mask):
    return bytes([0x40 | mask])


def can_seeds():
    # A warm engine at part throttle: the frames of the message set with plausible values.
    engine = [
        frame(0x101, [0x00, 0x03, 0x1F, 0x40, 0, 0, 22, 31]),
        frame(0x102, [20, 0, 63, 61, 0xFE, 40, 0x00, 0xA1]),
        frame(0x108, [0x0C, 0x4E, 0x00, 0xA2, 0xFF, 0xF6, 100, 98]),  # 3150 rpm, launch 1.62 s
        frame(0x109, [0x80 | 10, 0, 0x04 | 4, 0x40 | 0x20 | 4, 0x00, 97, 0, 0]),
        frame(0x110, [0x02, 0x64, 0x01, 0x36, 0x00, 0x61, 0x00, 0x51]),
        frame(0x120, [0x17, 0x70, 0x1D, 0x4C, 0, 0, 0, 0]),
    ]
    for screen in range(4):
        write("can", "engine_screen%d" % (screen + 1), bytes([screen | 4 << 2, 0]) + b"".join(engine) + ticks(8))
    # Every unit at once, a page further on.
    write("can", "engine_units", bytes([2 << 2, 1 + 3 + 9 + 18]) + b"".join(engine) + ticks(4))
    write("can", "engine_large", bytes([0, 0x80]) + b"".join(engine) + ticks(4) + keys(2) + ticks(2) + keys(0) + ticks(4))
    # The fault frames: every bit set, then cleared, on the fault screen.
    faults = [frame(i, [0xFF] * 8) for i in (0x121, 0x132, 0x133)]
    write("can", "faults_all", bytes([1, 0]) + b"".join(faults) + ticks(4) + b"".join(
        frame(i, [0] * 8) for i in (0x121, 0x132, 0x133)) + ticks(2))
    # Text frames: both halves of the firmware version, serial and part numbers without a
    # terminator, then a half of nothing but terminators.
    texts = [frame(0x122, b"\x00V1.2.3-"), frame(0x122, b"\x01beta77"), frame(0x123, b"SN123456"),
             frame(0x124, b"PN-98765"), frame(0x122, b"\x07\x00\x00\x00\x00\x00\x00\x00")]
    write("can", "texts_sysinfo", bytes([3, 0]) + b"".join(texts) + ticks(4))
    # Port 2's frame counts only while the throttle is above 70 %.
    write("can", "port2_gated", bytes([0, 0]) + frame(0x101, [0, 0, 0, 0, 0, 0, 80, 0]) + ticks(2) +
          frame(0x130, [0, 0, 0, 0x10, 0x27, 0x00, 0x10, 0], port=1) + ticks(2) +
          frame(0x101, [0, 0, 0, 0, 0, 0, 20, 0]) + frame(0x130, [0xFF] * 8, port=1) + ticks(2))
    # What the table drops or keeps: length 7 on 0x108, the same id extended, a remote
    # frame, an error frame, a length above 8, an id without a mailbox.
    write("can", "dropped", bytes([0, 0]) + frame(0x108, [0x1F, 0x40, 0, 0, 0, 0, 0, 0]) +
          frame(0x108, [0xFF] * 7) + frame(0x108 | CAN_EFF, [0xFF] * 8) + frame(0x108 | CAN_RTR, [0xEE] * 8) +
          frame(0x108 | CAN_ERR, [0xDD] * 8) + frame(0x108, [0xCC] * 8, dlc=15) + frame(0x7FF, [1] * 8) + ticks(3))
    # Two frames of one id between passes; signed fields at -1; 0xABCD across nibbles.
    write("can", "edges", bytes([0, 0]) + frame(0x108, [0, 1, 0, 0, 0, 0, 0, 0], show=False) +
          frame(0x108, [0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF]) +
          frame(0x102, [0, 0, 0, 0, 0xFF, 0, 0, 0]) + frame(0x127, [0, 0, 0, 0, 0, 0x0A, 0xBC, 0xD0]) + ticks(4))
    # A bus that goes silent: past the 3 s time-out the texts turn to "---".
    write("can", "silence", bytes([0, 0]) + b"".join(engine) + held(16) + held(4) + ticks(4))
    # Keys between the screens while the frames come.
    write("can", "keys_screens", bytes([0, 0]) + b"".join(engine) + keys(2) + ticks(2) + keys(0) + ticks(2) +
          keys(2) + ticks(2) + keys(0) + ticks(2) + keys(8) + ticks(2) + keys(0) + ticks(4))
    # The calibration link's identifiers come through the same table.
    write("can", "xcp_ids", bytes([0, 0]) + frame(0x200, [0xFF, 0]) + frame(0x100, [0xF2, 0xFF, 0x58, 0x43, 0x50, 0]) +
          frame(0x200, [0xFD]) + ticks(2))


# ---- XCP -------------------------------------------------------------------------------

def cmd(*data, control=0x10):
    return bytes([control, len(data)]) + bytes(data)


def broadcast(*data):
    return bytes([0x11, len(data)]) + bytes(data)


def unlock(resource):
    return cmd(0xF8, 0, resource) + bytes([0x18])


def mta(addr):
    return cmd(0xF6, 0, 0, 0, *struct.pack("<I", addr))


def xcp_seeds():
    connect = cmd(0xFF, 0)
    write("xcp", "identify", broadcast(0xF2, 0xFF, 0x58, 0x43, 0x50, 0) + broadcast(0xF2, 0xFF, 0x58, 0x43, 0x50, 1) +
          connect + cmd(0xFD) + cmd(0xFB) + cmd(0xFA, 0) + cmd(0xF5, 21) + bytes([0x30, 0]) + cmd(0xFE))
    write("xcp", "upload", connect + mta(537) + cmd(0xF5, 4) + cmd(0xF5, 1) + mta(1) + cmd(0xF5, 255) +
          bytes([0xF0, 0]) + cmd(0xF4, 7, 0, 0, *struct.pack("<I", 969)) + mta(0) + cmd(0xF3, 0, 0, 0, *struct.pack("<I", 976)))
    write("xcp", "upload_edges", connect + mta(976) + cmd(0xF5, 1) + mta(970) + cmd(0xF5, 7) + mta(0xFFFFFFFF) +
          cmd(0xF5, 7) + cmd(0xF4, 7, 0, 0, *struct.pack("<I", 0xFFFFFFFC)) + mta(970) + cmd(0xF3, 0, 0, 0, 7, 0, 0, 0))
    write("xcp", "calibrate", connect + unlock(0x01) + mta(971) + cmd(0xF0, 1, 3) + mta(586) +
          cmd(0xF0, 6, 1, 2, 3, 4, 5, 6) + cmd(0xF0, 9, 1, 2, 3, 4, 5, 6) + cmd(0xEF, 3, 7, 8, 9) +
          cmd(0xEE, 1, 2, 3, 4, 5, 6, 7) + cmd(0xED, 1, 0, 0, 0xCB, 3, 0, 0) + cmd(0xEB, 3, 0, 0) + cmd(0xEA, 1, 0) +
          cmd(0xE9) + cmd(0xE6, 1, 0) + cmd(0xE5, 0, 0) + cmd(0xE4, 0, 0, 1, 0) + cmd(0xEC, 2, 0xFF, 0, 0, 0))
    write("xcp", "seed_key", connect + cmd(0xF8, 0, 0x04) + cmd(0xF7, 4, 1, 2, 3, 4) + connect + cmd(0xF8, 0, 0x04) +
          cmd(0xF8, 1, 0x04) + cmd(0xF7, 2, 1, 2) + cmd(0xF7, 2, 3, 4) + connect + cmd(0xF8, 0, 0x20) +
          cmd(0xF8, 0, 0x10) + bytes([0x18]) + cmd(0xD2) + cmd(0xD1, 0, 0, 0, 0, 1, 0, 0) + cmd(0xD0, 2, 1, 2) +
          cmd(0xCF) + cmd(0xCC, 0, 1, 0) + cmd(0xCB, 0, 0, 0, 0) + cmd(0xCA, 1, 1) + cmd(0xC9, 1, 2, 3, 4, 5, 6, 7))
    # Three lists of two ODTs of seven entries, started on the three events.
    daq = connect + unlock(0x04) + cmd(0xD6) + cmd(0xD5, 0, 3, 0)
    for lst in range(3):
        daq += cmd(0xD4, 0, lst, 0, 2)
    for lst in range(3):
        for odt in range(2):
            daq += cmd(0xD3, 0, lst, 0, odt, 7)
    for lst in range(3):
        for odt in range(2):
            daq += cmd(0xE2, 0, lst, 0, odt, 0)
            for e in range(7):
                daq += cmd(0xE1, 0xFF, 1 + e % 4, 0, *struct.pack("<I", 537 + 4 * e))
        daq += cmd(0xE0, 0x10, lst, 0, lst, 0, 1, 0) + cmd(0xDF, 0, lst, 0) + cmd(0xD8, 0, lst, 0)
        daq += cmd(0xDE, 2, lst, 0)
    daq += cmd(0xDD, 1) + cmd(0xDC) + cmd(0xDA) + cmd(0xD9) + cmd(0xF2, 0xFE, 0, 0) + cmd(0xF2, 0xFD, 1, 0, 0x10, 0x03, 0, 0)
    write("xcp", "daq_three_lists", daq + bytes([0x70, 0]))
    # Bit entries, entries at the end of the space, a STIM list, lists stopped and freed.
    stim = connect + bytes([0x04 | 0x10, 1, 0xFF]) + cmd(0xD6) + cmd(0xD5, 0, 2, 0) + cmd(0xD4, 0, 0, 0, 1) + \
        cmd(0xD4, 0, 1, 0, 1) + cmd(0xD3, 0, 0, 0, 0, 2) + cmd(0xD3, 0, 1, 0, 0, 2) + cmd(0xE2, 0, 0, 0, 0, 0) + \
        cmd(0xE1, 3, 1, 0, *struct.pack("<I", 975)) + cmd(0xE1, 0xFF, 8, 0, *struct.pack("<I", 968)) + \
        cmd(0xE2, 0, 1, 0, 0, 0) + cmd(0xE1, 0xFF, 2, 0, *struct.pack("<I", 277)) + \
        cmd(0xE0, 0x02, 1, 0, 1, 0, 1, 0) + cmd(0xE0, 0x30, 0, 0, 0, 0, 1, 0) + cmd(0xDE, 1, 0, 0) + \
        cmd(0xDE, 1, 1, 0) + cmd(0xDD, 1) + bytes([0x02 | 0x10, 3, 0, 1, 2]) + cmd(0xDD, 0) + cmd(0xE3, 0, 0, 0) + cmd(0xD6)
    write("xcp", "daq_stim_bits", stim + bytes([0x70, 0]))
    # Commands out of order, lengths 0 and above 8, the DAQ id, an unknown command.
    write("xcp", "sequence_errors", cmd(0xFD) + cmd(0xF5, 1) + connect + cmd(0xE2, 0, 9, 0, 9, 9) + cmd(0xE1, 0xFF, 4) +
          cmd(0xD4, 0, 0, 0, 1) + cmd(0xD3, 0, 0, 0, 0, 1) + cmd(0xEF, 1, 1) + cmd(0xF1) + cmd(0xC0) +
          bytes([0x10, 0]) + bytes([0x10, 12, 0xFF, 0, 1, 2, 3, 4, 5, 6]) + cmd(0xFC) + cmd(0xF9, 1, 0, 0) +
          bytes([0x13, 0x00, 0x02, 2, 0xFF, 0]))


# ---- I/O board -------------------------------------------------------------------------

def sentence(body):
    return (body + "*%02X\r" % ((sum(body.encode("latin-1")) + ord("*")) & 0xFF)).encode("latin-1")


MODE_ONE = ["$L,00,00", "$I,0000,0000,0000,0000,0000,0000,0000,0000,0000", "$k,0000,1000,0000,0000,0AF0",
            "$e,00,00,00,00,FF", "$S,0000,0000,0000,0000,0000,1000", "$G,0000,O,0000,O,0000,O", "$P,0000"]
MODE_TWO = ["$O,00,00", "$J,0000,0000,0000,0000,0000,0000,0000,0000,0000", "$n,0000,1000,0000,0000,0AF0",
            "$d,00,00,00,00", "$R,0000,0000,0000,0000", "$H,0000,C"]


def stream(bodies):
    return b"".join(sentence(b) for b in bodies)


def ioboard_seeds():
    write("ioboard", "stream_mode1", bytes([0x02]) + stream(MODE_ONE) + stream(
        ["$I,0000,03E8,03E8,000F,0064,0000,0000,0000,0000", "$S,03E8,0000,0000,0000,04B0,1000", "$R,0000,0000,0000,07D0",
         "$P,0064", "$G,0001,C,0002,O,0003,C", "$P,FFFE"]))
    write("ioboard", "stream_mode2_large", bytes([0x07]) + stream(["$T,2"] + MODE_ONE + MODE_TWO))
    write("ioboard", "stream_resistance", bytes([0x1A]) + stream(MODE_ONE) + stream(
        ["$k,0000,0800,0000,0000,0578", "$I,0000,03E8,03E8,000F,0578,0000,0000,0000,0000",
         "$L,0C,01", "$e,FF,00,00,00,03", "$d,00,00,00,80", "$O,03,02"]))
    write("ioboard", "stream_late_references", bytes([0x22]) + stream(MODE_ONE * 3))
    # Broken sentences: a bad field, an unknown reply, a wrong checksum, a "$" restarting,
    # a NUL, lower-case checksum digits, an overrun of the sentence buffer.
    noise = b"noise\r\r$W*A5\r$P,0064*00\r$P,00" + sentence("$P,0064") + b"$P,00\0P,0064*D3\r$*\r$W*G5\r"
    write("ioboard", "stream_noise", bytes([0x02]) + noise + stream(["$L,00,0G", "$S,0000,0000,0000,0000,0000,10x0",
                                                                     "$X,1234", "$L,00"]) +
          b"$" + b"B" * 1100 + b"\r" + sentence("$L,01,7f").lower())
    # The bring-up of a small dash whose board has application 5: the bootloader answers,
    # the file's application 7 is written (42 sectors erased, its 16 bytes and the five of
    # version, checksum and length programmed, the sum of the 16 checked), the application
    # starts and answers, and the stream begins.
    bring_up = stream(["$W,b,01,a,05,h,02"]) + stream(["$e,0"] * 42) + stream(["$p,0"] * 21)
    bring_up += stream(["$c,0178"]) + stream(["$W,m,07,b,01,h,02"]) + stream(MODE_ONE)
    write("ioboard", "bring_up_update", bytes([0x00]) + bring_up)
    write("ioboard", "bring_up_current", bytes([0x00]) + stream(["$W,b,01,a,07", "$W,m,07,b,01,h,02"] + MODE_ONE))
    # A large dash without a file, its board without an application; and bad answers.
    write("ioboard", "bring_up_missing", bytes([0x01]) + stream(["$W,b,01,a,FF,h,02", "$W,b,01,a,FF"]))
    write("ioboard", "bring_up_failures", bytes([0x00]) + stream(["$W,x,01,a,05,h,02", "$W,b,0G,a,05,h,02",
                                                                  "$W,b,01,a,05,h,02", "$e,1"]) +
          stream(["$W,b,01,a,05,h,02"] + ["$e,0"] * 42 + ["$p,1"]) +
          stream(["$W,b,01,a,05,h,02"] + ["$e,0"] * 42 + ["$p,0"] * 21 + ["$c,FFFF"]) +
          stream(["$W,b,01,a,07", "$W,b,01,a,07,h,02"]))


# ---- Settings ----------------------------------------------------------------------------

def crc16(data):
    crc = 0
    for b in data:
        crc ^= b << 8
        for _ in range(8):
            crc = ((crc << 1) ^ 0x1021) if crc & 0x8000 else crc << 1
            crc &= 0xFFFF
    return crc


def patches(*pairs):
    out = b""
    for offset, value in pairs:
        out += struct.pack("<HB", offset, value)
    return out


def settings(mode, script, body):
    return bytes([mode, len(script)]) + bytes(script) + body


# Walks the main screens with key 2, opens the menus with key 4 and steps in them.
WALK = [0x02, 0x20, 0x02, 0x20, 0x02, 0x20, 0x01, 0x20, 0x08, 0x20, 0x04, 0x20, 0x08, 0x20, 0x10, 0x20, 0x10, 0x40]


def settings_seeds():
    write("settings", "defaults", settings(1, WALK, b""))
    write("settings", "missing_file", settings(0, [], b""))
    write("settings", "wrong_stamp", settings(5, [], struct.pack("<II", 7, 0x12345678)))
    # A stored record with the right stamp and a CRC that does not fit, its counter
    # past 500000; and one of all ones.
    record = bytearray(400)
    struct.pack_into("<III", record, 4, 500001, 0x3048483C, 12)
    struct.pack_into("<I", record, 0, crc16(record[4:]) ^ 1)
    write("settings", "bad_crc_counter", settings(0, [], bytes(record) + b"\xFF" * (32768 - 400)))
    write("settings", "erased_old", settings(3, [], b"\xFF" * 32768))
    # Fields out of their ranges, each on a record that passes the CRC.
    write("settings", "screens_out_of_range", settings(2, WALK, patches((394, 0), (23, 0), (24, 9), (29, 0))))
    write("settings", "screen_9_page_255", settings(2, WALK, patches((394, 9), (23, 255), (29, 4))))
    write("settings", "units_out_of_range", settings(2, WALK, patches((22, 0), (25, 9), (26, 4), (27, 3))))
    write("settings", "profiles_wild", settings(2, WALK, patches(
        *[(34 + i, 0xFF) for i in range(8)], (30, 0), (31, 255), (32, 16), (29, 2), (154, 0x44), (155, 0x01))))
    write("settings", "counter_and_switches", settings(2, [], patches(
        (4, 0xFF), (5, 0xFF), (6, 0xFF), (7, 0xFF), (395, 0), (396, 9), (397, 200), (398, 2), (12, 0xFF), (15, 0xFF))))
    write("settings", "large_walk", settings(8 | 2, WALK, patches((394, 2), (23, 7))))
    # Page 1 of profile 1 with the other gauge types: large (3), double wide (1), double
    # tall (2), each word its index then its type.
    for name, cells in (("gauges_large", [(0, 3), (3, 3), (5, 3), (7, 3)]), ("gauges_wide_tall", [(0, 1), (0, 2), (1, 1), (200, 0)]),
                        ("gauges_large_mixed", [(2, 3), (0, 0), (0, 2), (9, 3)])):
        words = []
        for i, (index, kind) in enumerate(cells):
            words += [(34 + 2 * i, index), (35 + 2 * i, kind)]
        write("settings", name, settings(2, [0x00, 0x20, 0x40], patches((394, 1), (23, 1), *words)))
    write("settings", "menus_deep", settings(1, [0x08, 0x20, 0x08, 0x20, 0x04, 0x20, 0x08, 0x20, 0x04, 0x20, 0x08,
                                                 0x20, 0x10, 0x20, 0x08, 0x20, 0x08, 0x20, 0x04, 0x20, 0x04, 0x20], b""))


# ---- Text ------------------------------------------------------------------------------

def coordinate(v):
    return bytes([24]) + struct.pack("<h", v)


def text(call, font, size, x, y, w, h, s, align=0, spacing=0, layer=1, opacity=100, colour=0xFFFF, element=0):
    return (bytes([call, font, size]) + coordinate(x) + coordinate(y) + coordinate(w) + coordinate(h) +
            bytes([align, spacing & 0xFF, layer, opacity]) + struct.pack("<H", colour) + bytes([element]) + s)


def text_seeds():
    write("text", "box_left", text(0, 0, 16, 10, 10, 300, 40, b"RPM 3150", align=0))
    write("text", "box_centre_kern", text(0, 5, 20, 0, 0, 319, 239, b"AVATAR WAVE To", align=1 | 4, spacing=3))
    write("text", "box_right_numbers", text(0, 2, 22, -50, 200, 330, 260, b" -12.50:\xc2\xad", align=2 | 8, spacing=-2))
    write("text", "anchor_utf8", text(1, 1, 14, 319, 239, 0, 0, "°C € é ÄÖÜ".encode(), align=2 | 8, layer=2,
                                      opacity=50))
    write("text", "anchor_emoji", text(1, 3, 32, 0, 0, 0, 0, "😀 \U0001F680".encode(), align=1 | 4))
    write("text", "current_fonts", text(2, 4, 12, 160, 120, 0, 0, b"Comic text", align=1, spacing=1))
    write("text", "numbers", text(3, 2, 19, 100, 100, 0, 0, b"-0123456789.:", align=1))
    write("text", "textbox_border", text(4, 0, 10, 5, 5, 100, 30, b"FAULT", align=3 << 4, colour=0xF800))
    write("text", "invalid_utf8", text(0, 0, 12, 0, 0, 319, 239,
                                       b"\xc0\x80 \xed\xa0\x80 \xf5\x80\x80\x80 \xe2\x82 \xff\xfe A \xf0\x9f\x98"))
    write("text", "too_many_glyphs", text(0, 0, 8, 0, 0, 319, 239, b"W" * 260))
    write("text", "large_panel", text(0x80, 0, 140, 790, 470, 900, 1000, b"Wg", align=2 | 8, opacity=200))
    write("text", "edges", bytes([5, 7, 255]) + bytes([0, 22, 1, 21]) + bytes([0xFF, 0x80, 3, 255, 0, 0, 0xFF]) + b"A")


# ---- USB stick -------------------------------------------------------------------------

def usb_file(kind, content):
    if kind == 0:
        return bytes([0, len(content)]) + content
    return bytes([1]) + struct.pack("<H", len(content)) + content


def usb_ticks(n):
    return bytes([9, n - 1])


def usb_seeds():
    insert = bytes([2]) + usb_file(0, b"disk_sda1") + usb_ticks(4)
    write("usb", "insert_log_eject", insert + bytes([8, 1]) + usb_ticks(12) + bytes([7, 1]) + usb_ticks(4) +
          bytes([10]) + usb_file(1, b"USBSTICK_EJECTREADY") + bytes([4]) + usb_ticks(4) + bytes([3]) + usb_ticks(4))
    write("usb", "log_request_stops", insert + bytes([8, 1]) + usb_ticks(20) + bytes([8, 0]) + usb_ticks(4) +
          bytes([8, 1]) + usb_ticks(8) + bytes([3]) + usb_ticks(4))
    write("usb", "pulled_without_eject", insert + bytes([6, 1, 6, 3, 3, 6, 1, 6, 3]))
    write("usb", "eject_twice_no_stick", bytes([7, 0, 2]) + usb_file(0, b"disk_sda1") + bytes([6, 0, 7, 0, 7, 0]) +
          usb_ticks(2))
    write("usb", "answer_with_more", insert + bytes([7, 0]) + usb_file(1, b"USBSTICK_EJECTREADY and more\n") +
          bytes([4]) + usb_ticks(2) + bytes([6, 2]))
    write("usb", "answer_other", insert + usb_file(1, b"USBSTICK_EJECT") + bytes([4]) + usb_ticks(2) + bytes([4]) +
          usb_ticks(2) + bytes([5, 1, 5, 7]) + usb_ticks(2))
    write("usb", "names", bytes([2]) + usb_file(0, b"disk_sda1\n") + bytes([6, 0, 6, 1]) + usb_file(0, b".") +
          bytes([6, 0, 6, 1]) + usb_file(0, b"") + bytes([6, 0]) + usb_file(0, b"../../etc") + bytes([6, 0, 6, 3]) +
          usb_file(0, b"x" * 255) + bytes([6, 0, 6, 3]))
    write("usb", "long_answer", insert + bytes([7, 0]) + usb_file(1, b"USBSTICK_EJECTREADY" + b"z" * 1081) +
          bytes([4]) + usb_ticks(2))
    write("usb", "new_info_while_ejected", insert + bytes([7, 0]) + usb_file(1, b"USBSTICK_EJECTREADY") + bytes([4]) +
          usb_ticks(2) + usb_file(0, b"disk_sdb1") + bytes([6, 0, 6, 2, 3, 6, 1, 6, 0]))


# ---- Firmware --------------------------------------------------------------------------

def firmware_image(app, version, length=None, checksum=None):
    image = bytearray(b"\xFF" * 33792)
    image[:len(app)] = app
    length = len(app) if length is None else length
    image[32254:32256] = struct.pack(">H", length)
    total = sum(image[:min(length, 33792)]) & 0xFFFF
    image[32251] = version
    image[32252:32254] = struct.pack(">H", total if checksum is None else checksum)
    return bytes(image)


def laid_out(app, version, checksum, length, board=5):
    return bytes([board << 1]) + app + bytes([version]) + struct.pack(">HH", checksum, length)


def firmware_seeds():
    app = bytes(range(0x10, 0x30))
    write("firmware", "update_small", laid_out(app, 7, sum(app), len(app)))
    write("firmware", "same_version", laid_out(app, 5, sum(app), len(app)))
    write("firmware", "board_empty", laid_out(app, 7, sum(app), len(app), board=127))
    write("firmware", "checksum_wrong", laid_out(app, 7, 0x1234, len(app)))
    write("firmware", "length_past_image", laid_out(app, 9, 0, 0xFFFF))
    write("firmware", "length_zero", laid_out(b"", 3, 0, 0))
    write("firmware", "raw_whole", bytes([1 | 5 << 1]) + firmware_image(app, 7))
    write("firmware", "raw_short", bytes([1 | 5 << 1]) + firmware_image(app, 7)[:-1])


def main():
    for seeds in (can_seeds, xcp_seeds, ioboard_seeds, settings_seeds, text_seeds, usb_seeds, firmware_seeds):
        seeds()
    return 0


if __name__ == "__main__":
    sys.exit(main())
