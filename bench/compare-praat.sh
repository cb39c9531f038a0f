#!/bin/sh
# Times sonmetra-cli's analyses against Praat's on the same 10-minute 11025 Hz
# recording of espeak-ng speech, analysis against analysis, then measures how
# well both pitch methods agree with Praat on espeak-ng speech at three rates.
#
#   bench/compare-praat.sh [BUILD_DIR] [RUNS]     (defaults: build, 5)
#
# Praat's figure is its own stopwatch around the command (praat/time.praat),
# so its start-up and the reading of the file stay out. Ours is the whole
# sonmetra-cli run less an `info` run of the same file (start-up and reading).
# Each figure is the median of RUNS runs: the machine may be shared.
#
# Needs praat, espeak-ng, sox and python3 on the path.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build}
runs=${2:-5}
cli=$build/cli/sonmetra-cli
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for tool in praat espeak-ng sox python3; do
    command -v "$tool" >/dev/null || { echo "compare-praat.sh: $tool is missing" >&2; exit 1; }
done
[ -x "$cli" ] || { echo "compare-praat.sh: no $cli (build sonmetra-cli first)" >&2; exit 1; }

# Median wall-clock seconds of RUNS runs of a command (output to /dev/null).
median_run() {
    python3 - "$runs" "$@" <<'PY'
import statistics, subprocess, sys, time
runs, cmd = int(sys.argv[1]), sys.argv[2:]
times = []
for _ in range(runs):
    t0 = time.monotonic()
    subprocess.run(cmd, check=True, stdout=subprocess.DEVNULL)
    times.append(time.monotonic() - t0)
print(f"{statistics.median(times):.4f}")
PY
}
# Median of RUNS of Praat's own stopwatch for one analysis.
median_praat() {
    python3 - "$runs" "$here/praat/time.praat" "$@" <<'PY'
import statistics, subprocess, sys
runs, script, wav, analysis = int(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4]
times = [float(subprocess.run(["praat", "--run", script, wav, analysis], check=True, capture_output=True,
                              text=True).stdout.split()[-1]) for _ in range(runs)]
print(f"{statistics.median(times):.4f}")
PY
}
row() {  # label, our seconds, Praat's seconds, goal
    python3 -c "import sys; l, o, p, g = sys.argv[1], float(sys.argv[2]), float(sys.argv[3]), sys.argv[4]; \
print(f'{l:<44} {o:9.3f} {p:9.3f} {p / o:8.2f} x   (goal {g})')" "$1" "$2" "$3" "$4"
}

# Ten minutes of speech: espeak-ng reading a text over and over, at 11025 Hz.
text="The north wind and the sun were disputing which was the stronger, when a traveller came along \
wrapped in a warm cloak. They agreed that the one who first succeeded in making the traveller take \
his cloak off should be considered stronger than the other. Then the north wind blew as hard as he \
could, but the more he blew the more closely did the traveller fold his cloak around him."
espeak-ng -w "$work/passage.wav" "$text"
sox -D "$work/passage.wav" -r 11025 "$work/passage11.wav"
reps=$(python3 -c "import subprocess; d=float(subprocess.check_output(['soxi','-D','$work/passage11.wav'])); print(int(600/d)+1)")
set --
i=0
while [ "$i" -lt "$reps" ]; do set -- "$@" "$work/passage11.wav"; i=$((i + 1)); done
sox "$@" "$work/long.wav" trim 0 600

echo "Analysis times on a 10-minute 11025 Hz recording, seconds, median of $runs runs"
printf '%-44s %9s %9s %8s\n' "analysis" "ours" "Praat" "Praat/ours"
info=$(median_run "$cli" info "$work/long.wav")
ours() { python3 -c "import sys; print(max(float(sys.argv[1]) - float(sys.argv[2]), 1e-3))" "$(median_run "$cli" "$@")" "$info"; }
praat_pitch=$(median_praat "$work/long.wav" pitch)
row "pitch, cepstral" "$(ours pitch "$work/long.wav")" "$praat_pitch" ">= 2"
row "pitch, autocorrelation" "$(ours pitch "$work/long.wav" --method autocorrelation)" "$praat_pitch" ">= 2"
row "spectrogram 5 ms x 256 points, PNG" \
    "$(ours spectrogram "$work/long.wav" --columns 120000 --points 256 --png "$work/s.png")" \
    "$(median_praat "$work/long.wav" spectrogram)" ">= 2"
row "spectrogram with formant tracks, PNG" \
    "$(ours spectrogram "$work/long.wav" --columns 120000 --points 256 --formants --png "$work/f.png")" \
    "$(median_praat "$work/long.wav" formant)" ">= 3"
echo "(ours: the sonmetra-cli run less an info run, $info s; Praat: its stopwatch around the command;"
echo " spectrogram against To Spectrogram, formant tracks against To Formant (burg), pitch against To Pitch)"
echo
echo "Agreement with Praat's pitch on espeak-ng speech (frames 10 ms apart)"
for voice in en en+f3; do
    espeak-ng -v "$voice" -w "$work/speech-$voice.wav" "$text"
done
printf '%-7s %-7s %-16s %8s %10s %12s %12s\n' rate voice method frames "voicing %" "gross err %" "mean dev %"
for rate in 11025 16000 22050; do
    for voice in en en+f3; do
        wav="$work/speech-$voice-$rate.wav"
        sox -D "$work/speech-$voice.wav" -r "$rate" "$wav"
        praat --run "$here/praat/pitch.praat" "$wav" "$work/praat.txt"
        for method in cepstral autocorrelation; do
            "$cli" pitch "$wav" --method "$method" >"$work/ours.txt"
            python3 - "$work/ours.txt" "$work/praat.txt" "$rate" "$voice" "$method" <<'PY'
import sys
ours_path, praat_path, rate, voice, method = sys.argv[1:]
praat = []
for line in open(praat_path):
    t, f = line.split()
    praat.append((float(t), float(f)))
rows = [l.split('\t') for l in open(ours_path).read().splitlines()[1:]]
half_window = int(float(rate) * 0.001 * 35) / float(rate) / 2  # frame centre = start + L/2
frames = agree = both = gross = 0
dev = 0.0
j = 0
for r in rows:
    t = float(r[1]) / 1000 + half_window
    f = float(r[2])
    while j + 1 < len(praat) and abs(praat[j + 1][0] - t) <= abs(praat[j][0] - t):
        j += 1
    if not praat or abs(praat[j][0] - t) > 0.0051:
        continue
    p = praat[j][1]
    frames += 1
    agree += (f > 0) == (p > 0)
    if f > 0 and p > 0:
        both += 1
        if abs(f - p) > 0.2 * p:
            gross += 1
        else:
            dev += abs(f - p) / p
ok = both - gross
print(f"{rate:<7} {voice:<7} {method:<16} {frames:8d} {100*agree/max(frames,1):10.1f} "
      f"{100*gross/max(both,1):12.2f} {100*dev/max(ok,1):12.2f}")
PY
        done
    done
done
echo "(voicing %: frames where both call the frame voiced or both unvoiced; gross err %: of the frames"
echo " both call voiced, more than 20 % away from Praat; mean dev %: mean distance of the others)"
