#!/usr/bin/env python3
"""Writes the table of bitrates that the calculator is compared with, to standard output.

It says the curve a second time, in another language, with the coefficients as they are given: run it and compare with
bitrates.tsv after a change. Each product and sum is rounded to a double, as the library's are.
"""

import math
import struct

CURVES = {
    "h264": (99.9650872204623, 0.163652062395517, 0.483820240871237, -0.00793080245421208),
    "mpeg4": (99.9621364307958, 0.163669325776921, 0.483816664965792, -0.00793062549157845),
    "mpeg12": (99.96133044, 6.526160392, 1.639234292, -0.078663524),
    "mjpeg": (500.0, -4.62500677917623, 2.72373244426795, -0.114934628771719),
    "wmv2": (99.8816487838461, 4.16562325661246, 0.339860979808646, -0.00718604072365845),
    "h263": (99.8919472955631, 4.50545164115977, -0.684179758313058, 0.0641868167610101),
    "gif": (602.9157590971861, 0.0, 7.261130503590738, 0.21906541848060573),
}
CODECS = {
    "CODEC_ID_H264": "h264",
    "CODEC_ID_THEORA": "h264",
    "CODEC_ID_VP8": "h264",
    "CODEC_ID_VP9": "h264",
    "CODEC_ID_MPEG4": "mpeg4",
    "CODEC_ID_MPEG1VIDEO": "mpeg12",
    "CODEC_ID_MPEG2VIDEO": "mpeg12",
    "CODEC_ID_MJPEG": "mjpeg",
    "CODEC_ID_WMV2": "wmv2",
    "CODEC_ID_H263": "h263",
    "CODEC_ID_GIF": "gif",
    "CODEC_ID_H265": "h264",
    "CODEC_ID_AAC": "h264",
    "": "h264",
}
FRAMES = [
    (0, 0), (1, 1), (176, 144), (320, 240), (353, 287), (640, 480), (720, 576), (1280, 720), (1920, 1080),
    (3840, 2160), (7680, 4320), (1 << 20, 1 << 20), (1 << 40, 3), (640, -480), ((1 << 63) - 1, 1 << 60),
]  # fmt: skip
RATES = [25.0, 0.0, 1.0, 15.0, 24.0, 24000 / 1001, 24.999, 30000 / 1001, 30.0, 30.001, 50.0, 60.0, 1000.0, -5.0, 1e300]
QUALITIES = [1, 0, 2, 16, 31, 32, 33, -1, -2147483648, 2147483647]
LOWEST, HIGHEST = -(1 << 63), (1 << 63) - 1


def integer(value):
    if math.isnan(value):
        return 0
    return HIGHEST if value >= 2.0**63 else LOWEST if value < -(2.0**63) else int(value)


def curve(width, height, fps, c):
    area = float(width) * float(height)
    side = math.sqrt(area) if area >= 0 else math.nan
    value = c[0] + c[1] * side
    value = (side * side / 100) * c[2] + value
    value = (side * (side * side) / 10000) * c[3] + value
    value = value if value > c[0] else c[0]
    if fps > 30:
        value = value * ((fps - 30) * 0.1 / 20 + 1)
    elif fps < 25:
        value = value * (fps * 0.7 / 25 + 0.3)
    return integer(value * 1024)


def scaled(bitrate, quality):
    (unsigned,) = struct.unpack("I", struct.pack("i", quality))
    if unsigned > 32:
        return bitrate
    return integer(((quality - 1) * -0.6666666666666666 / 31 + 1) * float(bitrate))


def half(bitrate):
    return abs(bitrate) // 2 * (1 if bitrate >= 0 else -1)


def double(bitrate):
    return max(LOWEST, min(HIGHEST, bitrate * 2))


def main():
    print("# Made by bitrates.py")
    print("# codec\twidth\theight\tframes a second\tquality\tunscaled\tdefault\tminimum\tmaximum")
    turn = 0
    for codec, name in CODECS.items():
        for number, (width, height) in enumerate(FRAMES):
            # Every frame meets the rate that leaves the curve alone and two others, every rate some qualities.
            for fps in (RATES[0], RATES[1 + turn % 14], RATES[1 + (turn * 5 + number) % 14]):
                quality = QUALITIES[turn % len(QUALITIES)]
                bitrate = curve(width, height, fps, CURVES[name])
                results = (scaled(b, quality) for b in (bitrate, half(bitrate), double(bitrate)))
                print(codec, width, height, repr(fps), quality, bitrate, *results, sep="\t")
                turn += 1


main()
