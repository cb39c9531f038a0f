#!/usr/bin/env python3
"""Writes the sound-file fixtures of the import tests into fixtures/.

Python standard library only (struct, wave, math); FLAC, Ogg Vorbis and CAF
are encoded by sox from WAV files this script writes first. Every file is
named by its parameters. The sample values follow formulas that the tests
compute again:

  ramp16(i)       = (i * 263) mod 65536, read as a signed 16-bit value
  second channel  = bitwise not of ramp16(i)   (so -ramp16(i) - 1)
  byte8(i)        = (i * 7) mod 256            (8-bit files)

Every file comes out byte for byte the same on each run except the Ogg one,
whose stream serial number is random; the tests only decode it.

Run it from anywhere: python3 tests/document/import/make_fixtures.py
"""

import math
import os
import struct
import subprocess
import wave

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "fixtures")
N = 1000  # frames per file unless a name says otherwise


def ramp16(i):
    v = (i * 263) % 65536
    return v - 65536 if v >= 32768 else v


def second16(i):
    return -ramp16(i) - 1


def byte8(i):
    return (i * 7) % 256


def write(name, data):
    with open(os.path.join(OUT, name), "wb") as f:
        f.write(data)


# --- RIFF / WAVE -------------------------------------------------------------

def riff_chunk(cid, body, size=None):
    size = len(body) if size is None else size
    pad = b"\0" if len(body) % 2 else b""
    return cid + struct.pack("<I", size) + body + pad


def wav_bytes(chunks, riff_size=None):
    body = b"WAVE" + b"".join(chunks)
    return b"RIFF" + struct.pack("<I", len(body) if riff_size is None else riff_size) + body


def fmt16(tag, channels, rate, bits):
    align = channels * ((bits + 7) // 8)
    return riff_chunk(b"fmt ", struct.pack("<HHIIHH", tag, channels, rate, rate * align, align, bits))


def pcm16(frames, channels):
    out = bytearray()
    for i in range(frames):
        out += struct.pack("<h", ramp16(i))
        if channels > 1:
            out += struct.pack("<h", second16(i))
        for _ in range(2, channels):
            out += struct.pack("<h", 0)
    return bytes(out)


def write_wave_module(name, channels, rate, frames):
    # The standard library's own writer: an independent check of our reader.
    with wave.open(os.path.join(OUT, name), "wb") as w:
        w.setnchannels(channels)
        w.setsampwidth(2)
        w.setframerate(rate)
        w.writeframes(pcm16(frames, channels))


def make_wav():
    write_wave_module("wav-16-1ch-11025.wav", 1, 11025, N)
    write_wave_module("wav-16-2ch-22050.wav", 2, 22050, N)
    write_wave_module("wav-16-3ch-8000.wav", 3, 8000, N)
    u8 = bytes(byte8(i) for i in range(N))
    write("wav-8-1ch-8000.wav", wav_bytes([fmt16(1, 1, 8000, 8), riff_chunk(b"data", u8)]))
    # Every mu-law code once, in order.
    write("wav-mulaw-1ch-8000.wav", wav_bytes([fmt16(7, 1, 8000, 8), riff_chunk(b"data", bytes(range(256)))]))
    data = riff_chunk(b"data", pcm16(N, 1))
    # A chunk of odd size (3 bytes plus its pad byte) between fmt and data.
    write("wav-16-1ch-16000-odd-chunk.wav",
          wav_bytes([fmt16(1, 1, 16000, 16), riff_chunk(b"junk", b"abc"), data]))
    write("wav-16-1ch-8000-data-before-fmt.wav", wav_bytes([data, fmt16(1, 1, 8000, 16)]))
    # The data chunk claims 4000 bytes more than the file holds.
    write("wav-16-1ch-8000-truncated-data.wav",
          wav_bytes([fmt16(1, 1, 8000, 16), riff_chunk(b"data", pcm16(N, 1), size=2 * N + 4000)]))
    write("wav-16-0ch-8000.wav", wav_bytes([fmt16(1, 0, 8000, 16), data]))
    write("wav-16-1ch-rate0.wav", wav_bytes([fmt16(1, 1, 0, 16), data]))
    write("wav-16-1ch-rate2000000.wav", wav_bytes([fmt16(1, 1, 2000000, 16), data]))
    # A fmt chunk of 10 bytes: too short to hold the format record.
    write("wav-short-fmt.wav", wav_bytes([riff_chunk(b"fmt ", b"\1\0\1\0\x40\x1f\0\0\0\0"), data]))

    # 32-bit float: a ramp within full scale, then 5 values beyond it.
    floats = [math.sin(2 * math.pi * i / 50) * 0.9 for i in range(N - 5)] + [1.5, -2.0, 1.0001, -1.0001, 7.0]
    body = b"".join(struct.pack("<f", x) for x in floats)
    write("wav-float32-1ch-16000.wav",
          wav_bytes([fmt16(3, 1, 16000, 32), riff_chunk(b"fact", struct.pack("<I", N)), riff_chunk(b"data", body)]))

    # 24-bit values that test rounding to 16 bits.
    v24 = [0x7FFFFF, 0x000080, 0x00007F, -128, -129, -0x800000, 0x012345, 0x00017F, 0x000180, 0]
    body = b"".join(struct.pack("<i", v)[:3] for v in v24)
    write("wav-24-1ch-44100.wav", wav_bytes([fmt16(1, 1, 44100, 24), riff_chunk(b"data", body)]))

    # WAVE_FORMAT_EXTENSIBLE, 16-bit stereo, sub-format PCM.
    pcm_guid = struct.pack("<IHH", 1, 0x0000, 0x0010) + bytes([0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71])
    ext = struct.pack("<HHIIHHHHI", 0xFFFE, 2, 48000, 48000 * 4, 4, 16, 22, 16, 3) + pcm_guid
    write("wav-extensible-16-2ch-48000.wav", wav_bytes([riff_chunk(b"fmt ", ext), riff_chunk(b"data", pcm16(N, 2))]))


# --- CSL NSP -------------------------------------------------------------------

def nsp_header(cid, rate, samples):
    body = b"Nov 21 09:00:00 2026" + struct.pack("<iihh", rate, samples, 32767, 0)
    return riff_chunk(cid, body)


def nsp_bytes(chunks):
    body = b"".join(chunks)
    return b"FORM" + b"DS16" + struct.pack("<i", 12 + len(body)) + body


def make_nsp():
    data = riff_chunk(b"SDA_", pcm16(N, 1))
    write("nsp-16-1ch-10000.nsp", nsp_bytes([nsp_header(b"HEDR", 10000, N), data]))
    write("nsp-hdr8-8000.nsp", nsp_bytes([nsp_header(b"HDR8", 8000, N), data]))
    # A 5-byte chunk followed by its pad byte, then the samples.
    write("nsp-odd-chunk.nsp", nsp_bytes([nsp_header(b"HEDR", 10000, N), riff_chunk(b"NOTE", b"hello"), data]))
    write("nsp-data-before-header.nsp", nsp_bytes([data, nsp_header(b"HEDR", 10000, N)]))
    # Only the first data chunk is taken: the second (all zeros) ends the scan.
    write("nsp-two-data-chunks.nsp",
          nsp_bytes([nsp_header(b"HEDR", 10000, N), data, riff_chunk(b"SD_B", bytes(2 * N))]))
    write("nsp-truncated-data.nsp",
          nsp_bytes([nsp_header(b"HEDR", 10000, N), riff_chunk(b"SDA_", pcm16(N, 1), size=2 * N + 6000)]))
    write("nsp-rate0.nsp", nsp_bytes([nsp_header(b"HEDR", 0, N), data]))
    write("nsp-no-data.nsp", nsp_bytes([nsp_header(b"HEDR", 10000, N)]))


# --- AIFF / AIFC -----------------------------------------------------------------

def ext80(rate):
    """IEEE 754 80-bit extended, big-endian, of a positive finite rate."""
    m, e = math.frexp(rate)
    return struct.pack(">HQ", e - 1 + 16383, int(m * (1 << 64)))


def iff_chunk(cid, body):
    pad = b"\0" if len(body) % 2 else b""
    return cid + struct.pack(">I", len(body)) + body + pad


def aiff_bytes(kind, chunks):
    body = kind + b"".join(chunks)
    return b"FORM" + struct.pack(">I", len(body)) + body


def comm(channels, frames, bits, rate_bytes, compression=None):
    body = struct.pack(">hIh", channels, frames, bits) + rate_bytes
    if compression is not None:
        body += compression + b"\x09not named"  # a Pascal string of even length
    return iff_chunk(b"COMM", body)


def ssnd(samples, offset=0):
    return iff_chunk(b"SSND", struct.pack(">II", offset, 0) + bytes(offset) + samples)


def be16(frames, channels):
    out = bytearray()
    for i in range(frames):
        out += struct.pack(">h", ramp16(i))
        if channels > 1:
            out += struct.pack(">h", second16(i))
    return bytes(out)


def make_aiff():
    write("aiff-16-1ch-44100.aiff", aiff_bytes(b"AIFF", [comm(1, N, 16, ext80(44100)), ssnd(be16(N, 1))]))
    write("aiff-16-2ch-22050.aiff", aiff_bytes(b"AIFF", [comm(2, N, 16, ext80(22050)), ssnd(be16(N, 2))]))
    write("aiff-8-1ch-11025.aiff",
          aiff_bytes(b"AIFF", [comm(1, N, 8, ext80(11025)), ssnd(bytes(byte8(i) for i in range(N)))]))
    le = b"".join(struct.pack("<h", ramp16(i)) for i in range(N))
    write("aifc-sowt-1ch-8000.aifc", aiff_bytes(b"AIFC", [comm(1, N, 16, ext80(8000), b"sowt"), ssnd(le)]))
    write("aifc-none-1ch-16000.aifc", aiff_bytes(b"AIFC", [
        iff_chunk(b"FVER", struct.pack(">I", 0xA2805140)), comm(1, N, 16, ext80(16000), b"NONE"), ssnd(be16(N, 1))]))
    # Known chunks of odd and even size before and between COMM and SSND, and
    # an SSND whose samples start 4 bytes into it.
    write("aiff-16-1ch-8000-skipped-chunks.aiff", aiff_bytes(b"AIFF", [
        iff_chunk(b"NAME", b"odd"), iff_chunk(b"(c) ", b"Sonmetra"), comm(1, N, 16, ext80(8000)),
        iff_chunk(b"ANNO", b"x"), iff_chunk(b"COMT", struct.pack(">H", 0)), ssnd(be16(N, 1), offset=4)]))
    infinite = struct.pack(">HQ", 0x7FFF, 1 << 63)
    nan = struct.pack(">HQ", 0x7FFF, (1 << 63) | 1)
    write("aiff-16-1ch-rate-inf.aiff", aiff_bytes(b"AIFF", [comm(1, N, 16, infinite), ssnd(be16(N, 1))]))
    write("aiff-16-1ch-rate-nan.aiff", aiff_bytes(b"AIFF", [comm(1, N, 16, nan), ssnd(be16(N, 1))]))
    write("aiff-16-1ch-rate0.aiff", aiff_bytes(b"AIFF", [comm(1, N, 16, bytes(10)), ssnd(be16(N, 1))]))
    write("aiff-16-1ch-rate2000000.aiff", aiff_bytes(b"AIFF", [comm(1, N, 16, ext80(2000000)), ssnd(be16(N, 1))]))
    write("aiff-16-0ch-8000.aiff", aiff_bytes(b"AIFF", [comm(0, N, 16, ext80(8000)), ssnd(be16(N, 1))]))
    # 30000 channels claimed: fewer bytes than one frame, so no samples at all.
    write("aiff-16-30000ch-8000.aiff", aiff_bytes(b"AIFF", [comm(30000, N, 16, ext80(8000)), ssnd(be16(N, 1))]))
    # COMM says 5000 frames, SSND holds 1000.
    write("aiff-16-1ch-8000-frames-past-end.aiff",
          aiff_bytes(b"AIFF", [comm(1, 5 * N, 16, ext80(8000)), ssnd(be16(N, 1))]))
    # Big-endian 32-bit float AIFC: not ours, libsndfile's.
    fl = b"".join(struct.pack(">f", 0.5 * math.sin(i / 10)) for i in range(N))
    write("aifc-fl32-1ch-22050.aifc", aiff_bytes(b"AIFC", [comm(1, N, 32, ext80(22050), b"fl32"), ssnd(fl)]))


# --- Other families, for the libsndfile reader -------------------------------------

def make_others():
    # Sun/NeXT AU: ".snd", header size, data size, encoding 3 (16-bit), rate,
    # channels, and a 4-byte annotation.
    body = b"".join(struct.pack(">h", ramp16(i)) for i in range(N))
    write("au-16-1ch-8000.au", b".snd" + struct.pack(">IIIII", 28, len(body), 3, 8000, 1) + bytes(4) + body)
    src = os.path.join(OUT, "wav-16-1ch-11025.wav")
    for name, extra in (("flac-16-1ch-11025.flac", []), ("caf-16-1ch-11025.caf", []),
                        ("ogg-1ch-11025.ogg", ["-C", "3"])):
        subprocess.run(["sox", "-q", src] + extra + [os.path.join(OUT, name)], check=True)


# --- Generic (raw integer and plain text) --------------------------------------------

def make_generic():
    write("raw-16le-1ch.raw", b"".join(struct.pack("<h", ramp16(i)) for i in range(N)))
    # A 32-byte header, big-endian samples and one trailing odd byte.
    write("raw-16be-hdr32-odd.raw",
          b"H" * 32 + b"".join(struct.pack(">h", ramp16(i)) for i in range(N)) + b"\x55")
    write("raw-8-1ch.raw", bytes(byte8(i) for i in range(N)))
    write("ascii-numbers.txt", b"0\n1 -1\n+2\t-2.4\n 2.5 1e3\n.5E1 -3.\n40000 -1e9\n  32767\r\n-32768\n")
    write("ascii-not-pure.txt", b"12\n13, 14\n15\n")
    # Only number characters, but "1-2" and "e5" are not numbers.
    write("ascii-number-chars-not-numbers.txt", b"1 2\n1-2\ne5\n")


def main():
    os.makedirs(OUT, exist_ok=True)
    make_wav()
    make_nsp()
    make_aiff()
    make_others()
    make_generic()


if __name__ == "__main__":
    main()
