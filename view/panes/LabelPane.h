// A channel's labels in a band of an analysis window, on its time axis: a
// line at each label's time and its text in the label's font and colour
// (black in black and white), justified Left, Center or Right of the line.
// A text that would cover one drawn before it goes down a row.
#pragma once

#include <QRect>
#include <vector>

#include "TimeAxis.h"
#include "document/CLabel.h"

class QPainter;

void drawLabelPane(QPainter& p, const QRect& pane, const TimeAxis& axis, const std::vector<sonmetra::CLabel>& labels,
                   const PaneStyle& style);
