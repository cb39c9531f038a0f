#!/bin/sh
# Records 60 s at 44100 Hz through a private PulseAudio null sink and counts
# the capture buffers against the wall clock (see tests/io/CaptureLossCheck.cpp).
#   tools/check_capture_loss.sh [build-folder] [seconds]
set -e
build=${1:-build}
cmake --build "$build" --target sound_capture_loss_check -j2
exec "$build/tests/io/sound_capture_loss_check" "${2:-60}"
