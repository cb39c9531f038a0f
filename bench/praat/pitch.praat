# Praat's To Pitch (autocorrelation) with the workstation's defaults: 10 ms
# step, 50 to 500 Hz. Writes "time_s<TAB>f0_hz" (0 when unvoiced) when an
# output file is given.
form Pitch
    sentence Input
    sentence Output
endform
sound = Read from file: input$
pitch = To Pitch: 0.01, 50, 500
if output$ <> ""
    n = Get number of frames
    text$ = ""
    for i to n
        t = Get time from frame number: i
        f = Get value in frame: i, "Hertz"
        if f = undefined
            f = 0
        endif
        text$ = text$ + fixed$(t, 6) + tab$ + fixed$(f, 4) + newline$
    endfor
    writeFile: output$, text$
endif
