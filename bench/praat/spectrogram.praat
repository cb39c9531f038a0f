# Praat's To Spectrogram on the same grid as the workstation's: one frame per
# 5 ms, 256 frequency points up to 5000 Hz, a 5 ms Gaussian window.
form Spectrogram
    sentence Input
endform
sound = Read from file: input$
To Spectrogram: 0.005, 5000, 0.005, 5000 / 256, "Gaussian"
