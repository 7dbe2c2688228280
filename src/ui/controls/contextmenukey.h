// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QObject;

namespace ravlin {

/// Lets Shift+F10 open the context menu of the control that has the keyboard focus, in every window of the program, as
/// the menu key does; a keyboard without that key is served so by every desktop's own programs. The filter lives as
/// long as application.
void openContextMenusByKey(QObject *application);

} // namespace ravlin
