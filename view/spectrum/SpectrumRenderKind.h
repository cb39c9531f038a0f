// The spectrum window as a render kind: `sonmetra --render spectrum` draws
// the FFT/LPC spectrum at --cursor, or the averaged one of --from/--to.
#pragma once

void registerSpectrumRenderKind();
