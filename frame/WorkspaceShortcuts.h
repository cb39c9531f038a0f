// Keeps the workspace's own window shortcuts off the menus' keys. Every
// window of the workspace has a system menu whose Close takes the desktop's
// close keys (Ctrl+F4, and Ctrl+W on Linux desktops); Ctrl+W is also "From
// Cursor for Duration", and two actions on one key make Qt refuse both
// ("Ambiguous shortcut overload"). Each window that joins the workspace
// loses from its system menu the keys that a menu of the menu bar uses, so
// that the command keeps its key; the window then closes with Ctrl+F4.
#pragma once

class QMdiArea;
class QMdiSubWindow;
class QMenuBar;

// Watches `area` for windows joining it (and being activated) for as long as it exists.
void keepWindowShortcutsOffMenus(QMdiArea* area, QMenuBar* bar);
// The same for one window, at once.
void removeMenuKeysFromSystemMenu(QMdiSubWindow* window, const QMenuBar* bar);
