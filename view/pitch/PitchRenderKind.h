// `sonmetra --render pitch FILE -o OUT`: the Pitch command on the whole
// signal, drawn by the pitch window's own view and drawing code.
#pragma once

void registerPitchRenderKind();
