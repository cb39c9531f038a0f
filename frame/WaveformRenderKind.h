// The waveform view as a render kind: `sonmetra --render waveform`.
#pragma once

void registerWaveformRenderKind();
