// Opening the child frames that are attached to a document (DocumentWindows.h):
// the analysis windows and the label list.
#pragma once

#include <QString>

#include "DocumentWindows.h"

class QMdiSubWindow;

// Puts a new frame into the workspace (AppServices; a frame without one, in
// tests and renders, stays a top-level window), attaches it to `doc` in
// `role` and brings it to the front. A frame whose hooks say nothing about
// the document closing is closed with it.
void openAttachedFrame(QMdiSubWindow* frame, const sonmetra::CKestruneDoc* doc, const QString& role,
                       AttachedWindow hooks);
// Shows an open frame in front of the others and makes it the active one.
void bringToFront(QMdiSubWindow* frame);
// For the frame's destructor: forgets it when it is still the one in `role`.
void detachIfAttached(const QMdiSubWindow* frame, const sonmetra::CKestruneDoc* doc, const QString& role);
