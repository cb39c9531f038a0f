#!/usr/bin/env python3
"""Makes examples/demo.kvd: a spoken sentence (espeak-ng, resampled to
11025 Hz with sox) as the audio channel, plus two slow data channels at
1102.5 Hz (oral airflow and intra-oral pressure, derived from the speech
envelope so that they move with the sentence), and a few labels.

The file is written directly in the document format (little-endian
"RVM_PC"), independently of the program's own writer, so that opening it
also checks the reader against a second implementation.

usage: tools/make_demo.py [OUT.kvd]
"""
import math
import os
import struct
import subprocess
import sys
import tempfile
import wave

SENTENCE = "Speech science measures the voice. Say papa, then say mama, slowly."
RATE = 11025
SLOW_DIVISOR = 10  # data channels at 1102.5 Hz


def speak(path):
    with tempfile.TemporaryDirectory() as tmp:
        raw = os.path.join(tmp, "say.wav")
        subprocess.run(["espeak-ng", "-v", "en", "-s", "140", "-w", raw, SENTENCE], check=True)
        subprocess.run(["sox", raw, "-r", str(RATE), "-c", "1", "-b", "16", path, "gain", "-n", "-3"], check=True)


def read_wav(path):
    with wave.open(path, "rb") as w:
        frames = w.readframes(w.getnframes())
    return list(struct.unpack("<%dh" % (len(frames) // 2), frames))


def envelope(samples, window):
    out = []
    acc = 0.0
    for i, s in enumerate(samples):
        acc += abs(s)
        if i >= window:
            acc -= abs(samples[i - window])
        out.append(acc / window)
    return out


def channel_header(duration, rate, count, audio, number, gain, bandwidth, name, units, labels,
                   calib=(0.0, 0.0, 1.0, 0.0), reserved=(0, 100, 0, 1, 0, 0, 0)):
    a, b, c, d, e, f, g = reserved
    h = struct.pack("<8d", duration, rate, float(count), 0.0, *calib)
    h += struct.pack("<13i", audio, 16, a, b, number, gain, bandwidth, len(labels), c, d, e, f, g)
    h += name.encode().ljust(64, b"\0") + units.encode().ljust(64, b"\0") + b"\0" * 4
    assert len(h) == 248
    return h


def label_record(time_ms, text, rgb=(0, 0, 160), justification=0, line=1):
    rec = struct.pack("<2d", time_ms, 0.0)
    rec += struct.pack("<2i", justification, line) + struct.pack("<4i", 0, 0, 0, 0)
    rec += struct.pack("<3i", *rgb)
    font = struct.pack("<5i", 14, 0, 0, 0, 700) + bytes(8) + b"Arial".ljust(32, b"\0")
    rec += font + text.encode().ljust(256, b"\0")
    assert len(rec) == 368
    return rec


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "examples", "demo.kvd")
    with tempfile.TemporaryDirectory() as tmp:
        wav = os.path.join(tmp, "demo.wav")
        speak(wav)
        audio = read_wav(wav)

    env = envelope(audio, 441)
    peak = max(env) or 1.0
    slow_rate = RATE / SLOW_DIVISOR
    flow = []
    pressure = []
    for k in range(len(audio) // SLOW_DIVISOR):
        e = env[k * SLOW_DIVISOR]
        t = k / slow_rate
        level = e / peak  # 0 in silence, 1 at the loudest moment
        flow.append(int(20000 * level - 6000 + 1500 * math.sin(2 * math.pi * 0.25 * t)))
        pressure.append(int(16000 * math.exp(-4.0 * level) * (1 + 0.1 * math.sin(2 * math.pi * 3 * t)) - 8000))

    def dur(n, rate):
        return n * 1000.0 / rate

    total = dur(len(audio), RATE)
    words = [(0.06, "speech"), (0.22, "science"), (0.42, "voice"), (0.58, "papa"), (0.78, "mama")]
    labels = [label_record(round(f * total, 1), w) for f, w in words]

    body = b""
    body += channel_header(total, float(RATE), len(audio), 1, 1, 1, RATE // 2, "Audio", "bits", labels)
    body += b"".join(labels) + struct.pack("<%dh" % len(audio), *audio)
    body += channel_header(dur(len(flow), slow_rate), slow_rate, len(flow), 0, 2, 8, 500, "Airflow", "ml/s", [],
                           calib=(0.0, 0.0, 2.5, -10.0))
    body += struct.pack("<%dh" % len(flow), *flow)
    body += channel_header(dur(len(pressure), slow_rate), slow_rate, len(pressure), 0, 3, 8, 500, "Pressure",
                           "cmH2O", [], calib=(0.0, 0.001, 0.5, 0.0))
    body += struct.pack("<%dh" % len(pressure), *pressure)

    header = b"RVM_PC".ljust(8, b"\0") + struct.pack("<i", 3) + bytes(500)
    with open(out, "wb") as f:
        f.write(header + body)
    print("wrote", out, len(audio), "audio samples,", len(flow), "samples per data channel")


if __name__ == "__main__":
    main()
