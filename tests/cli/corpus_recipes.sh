#!/bin/bash
# The corpus recipes of the README, run as a user would: GNU parallel on
# this machine, and the Slurm job array script with each task run by hand.
# Every result must equal the single run of its file.
#   corpus_recipes.sh SONMETRA_CLI SOURCE_DIR
set -euo pipefail
cli=$1
src=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { echo "FAIL: $*" >&2; exit 1; }

# 36 recordings: tones and noise of different lengths and rates, and 12
# documents with different labels.
mkdir corpus
for i in $(seq 1 36); do
  rate=$(( i % 3 == 0 ? 16000 : 11025 ))
  if (( i % 4 == 0 )); then
    sox -n -r $rate -b 16 corpus/rec$i.wav synth 0.$(( 3 + i % 5 )) pinknoise vol 0.3
  else
    sox -n -r $rate -b 16 corpus/rec$i.wav synth 0.$(( 3 + i % 5 )) sine $(( 90 + 7 * i )) vol 0.5
  fi
done
mkdir docs
for i in $(seq 1 12); do
  printf '0.%02d\t0.%d\tword %d\n1.%02d\t2.%02d\tlater\n' $i $(( i + 40 )) $i $i $i > labels.txt
  "$cli" labels import "$src/examples/demo.kvd" labels.txt -o docs/doc$i.kvd
done

# On one machine: GNU parallel, the files spread over two processes.
parallel --will-cite -j2 -m "$cli" pitch --method autocorrelation --out-dir pitch ::: corpus/*.wav
parallel --will-cite -j2 -m "$cli" intensity --every 50 --out-dir intensity ::: corpus/*.wav
parallel --will-cite -j2 -m "$cli" labels export --out-dir grids ::: docs/*.kvd

for f in corpus/*.wav; do
  name=$(basename "$f" .wav)
  "$cli" pitch "$f" --method autocorrelation | cmp -s - "pitch/$name.tsv" || fail "pitch of $f differs"
  "$cli" intensity "$f" --every 50 | cmp -s - "intensity/$name.tsv" || fail "intensity of $f differs"
done
for f in docs/*.kvd; do
  name=$(basename "$f" .kvd)
  "$cli" labels export "$f" single.TextGrid
  cmp -s single.TextGrid "grids/$name.TextGrid" || fail "labels of $f differ"
done
[ "$(ls pitch | wc -l)" = 36 ] && [ "$(ls grids | wc -l)" = 12 ] || fail "results are missing"

# On a cluster: the job array script, its tasks run here one by one in
# chunks of 10, with one bad file.
echo "not a sound" > corpus/rec25.wav
ls corpus/*.wav > files.txt
bad_task=$(( ($(grep -n rec25 files.txt | cut -d: -f1) - 1) / 10 ))
status=0
for task in 0 1 2 3; do
  SLURM_ARRAY_TASK_ID=$task CHUNK=10 SONMETRA_CLI=$cli \
    bash "$src/examples/slurm/corpus.sbatch" files.txt array pitch --method autocorrelation 2> "task$task.log" ||
    status=$(( status | (1 << task) ))
done
[ "$status" = $(( 1 << bad_task )) ] || fail "only task $bad_task should fail (failed tasks as bits: $status)"
grep -qx "corpus/rec25.wav: Wrong file type." "task$bad_task.log" ||
  fail "the bad file's message is missing: $(cat "task$bad_task.log")"
for f in corpus/*.wav; do
  name=$(basename "$f" .wav)
  [ "$name" = rec25 ] && { [ ! -e "array/$name.tsv" ] || fail "a result for the bad file"; continue; }
  cmp -s "pitch/$name.tsv" "array/$name.tsv" || fail "array result for $f differs"
done
echo "corpus recipes: 36 recordings and 12 documents, parallel and array results equal single runs"
