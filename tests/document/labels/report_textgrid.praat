# Reads a TextGrid, reports its tiers and their intervals or points on
# standard output (one line per tier, then one per item, tab-separated,
# numbers as Praat writes them), and saves it again as a text file.
#   praat --run report_textgrid.praat IN.TextGrid OUT.TextGrid
form Report a TextGrid
    sentence In
    sentence Out
endform
grid = Read from file: in$
tiers = Get number of tiers
writeInfoLine: "tiers", tab$, tiers
for t to tiers
    name$ = Get tier name: t
    intervals = Is interval tier: t
    if intervals
        n = Get number of intervals: t
        appendInfoLine: "IntervalTier", tab$, name$, tab$, n
        for i to n
            start = Get start time of interval: t, i
            end = Get end time of interval: t, i
            text$ = Get label of interval: t, i
            appendInfoLine: start, tab$, end, tab$, text$
        endfor
    else
        n = Get number of points: t
        appendInfoLine: "TextTier", tab$, name$, tab$, n
        for i to n
            time = Get time of point: t, i
            text$ = Get label of point: t, i
            appendInfoLine: time, tab$, text$
        endfor
    endif
endfor
Save as text file: out$
