# Times one of Praat's analyses with its own stopwatch, so that reading the
# file and Praat's start-up stay outside the figure. Prints the seconds.
#   analysis "pitch":       To Pitch with the workstation's defaults (10 ms, 50 to 500 Hz)
#   analysis "spectrogram": To Spectrogram on the workstation's grid (one frame
#                           per 5 ms, 256 points up to 5000 Hz, 5 ms Gaussian window)
#   analysis "formant":     To Formant (burg), one frame per 5 ms, five formants
#                           up to 5000 Hz, 25 ms window, pre-emphasis from 50 Hz
form Time
    sentence Input
    word Analysis
endform
sound = Read from file: input$
stopwatch
if analysis$ = "pitch"
    To Pitch: 0.01, 50, 500
elsif analysis$ = "spectrogram"
    To Spectrogram: 0.005, 5000, 0.005, 5000 / 256, "Gaussian"
elsif analysis$ = "formant"
    To Formant (burg): 0.005, 5, 5000, 0.025, 50
else
    exitScript: "unknown analysis: ", analysis$
endif
seconds = stopwatch
writeInfoLine: fixed$(seconds, 4)
