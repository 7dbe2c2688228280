// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/systemfolders.h"

#include <QStandardPaths>

#include <algorithm>
#include <array>

namespace ravlin::platform {
namespace {

struct Place
{
    SpecialFolder folder = SpecialFolder::Home;
    QStandardPaths::StandardLocation location = QStandardPaths::HomeLocation;
};

constexpr std::array Places{
    Place{SpecialFolder::Desktop, QStandardPaths::DesktopLocation},
    Place{SpecialFolder::Programs, QStandardPaths::ApplicationsLocation},
    Place{SpecialFolder::Documents, QStandardPaths::DocumentsLocation},
    Place{SpecialFolder::Music, QStandardPaths::MusicLocation},
    Place{SpecialFolder::Videos, QStandardPaths::MoviesLocation},
    Place{SpecialFolder::DesktopFiles, QStandardPaths::DesktopLocation},
    Place{SpecialFolder::Fonts, QStandardPaths::FontsLocation},
    Place{SpecialFolder::RoamingSettings, QStandardPaths::GenericConfigLocation},
    Place{SpecialFolder::LocalData, QStandardPaths::GenericDataLocation},
    Place{SpecialFolder::Pictures, QStandardPaths::PicturesLocation},
    Place{SpecialFolder::Home, QStandardPaths::HomeLocation},
};

} // namespace

QString specialFolder(int number)
{
    const auto *const place = std::find_if(
        Places.begin(), Places.end(), [number](const Place &each) { return static_cast<int>(each.folder) == number; });
    return place == Places.end() ? QString() : QStandardPaths::writableLocation(place->location);
}

QString windowsFolder()
{
    return {};
}

QString systemFolder()
{
    return {};
}

} // namespace ravlin::platform
