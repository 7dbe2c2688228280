// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Folders that the system keeps for a purpose, without a separator at the end; empty where it has none.
namespace ravlin::platform {

/// The numbers of the folders that have a counterpart on every system, as Windows counts them.
enum class SpecialFolder
{
    Desktop = 0,
    Programs = 2, ///< the programs' menu entries
    Documents = 5,
    Music = 13,
    Videos = 14,
    DesktopFiles = 16, ///< the folder that the desktop shows
    Fonts = 20,
    RoamingSettings = 26, ///< of all programs
    LocalData = 28,       ///< of all programs
    Pictures = 39,
    Home = 40
};

/// By its number; empty for one that is not among SpecialFolder.
QString specialFolder(int number);
/// Where Windows is installed, and its own programs; empty on other systems.
QString windowsFolder();
QString systemFolder();

} // namespace ravlin::platform
