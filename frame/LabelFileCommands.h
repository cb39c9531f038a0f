// File > "Import Labels..." and "Export Labels...": a document's labels
// from and to TextGrid files and tab-separated label texts.
//
// Import reads the file whole, asks which tier goes to which channel,
// checks that every tier fits, saves the document for Edit > Undo and only
// then replaces the chosen channels' labels; the view and the label list
// follow. Export asks which channels become which tiers, then for the file.
#pragma once

#include <QString>
#include <functional>

class CChildFrame;
class QAction;
class QWidget;
class CKestruneView;

namespace sonmetra {
class CKestruneDoc;
}

// Adds an entry to the File menu: its text, what it runs, and the rule
// that enables it (the main frame's own way of adding its entries).
using FileMenuAdder = std::function<QAction*(const QString&, std::function<void()>, std::function<bool()>)>;

// Adds the two entries where the main frame's File menu builder calls it;
// they act on the document of the active child frame, with `parent` as the
// dialogs' parent.
void addLabelFileCommands(QWidget* parent, std::function<CChildFrame*()> activeFrame, const FileMenuAdder& add);

// The two commands on the document of `view` (parent for the dialogs).
void importLabels(QWidget* parent, sonmetra::CKestruneDoc& doc, CKestruneView* view);
void exportLabels(QWidget* parent, const sonmetra::CKestruneDoc& doc);
