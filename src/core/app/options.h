// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

namespace ravlin {

class Settings;

/// What the options have where nothing is stored, and where the program is at home.
namespace defaults {

inline constexpr QStringView Server = u"gnudb.gnudb.org";     ///< public server that speaks the CD database's protocol
inline constexpr QStringView Mail = u"ravlin@ravlin.example"; ///< the maker's address
inline constexpr QStringView WebSite = u"https://ravlin.example/";
inline constexpr int TagSaveModeShown = 3; ///< the mode that the options dialog shows before one was ever chosen

} // namespace defaults

/// The text, or the default where it is empty.
QString textOrDefault(const QString &text, QStringView fallback);
/// The CD database's server and the e-mail address that is sent to it, as stored or else the defaults.
QString cdServer(const Settings &settings);
QString cdMail(const Settings &settings);

/// What a double click on a file does.
enum class DoubleClick
{
    Open, ///< with the system's player
    Edit  ///< shows its tag on the page for one file
};

/// The options of the dialog's second page.
struct FurtherOptions
{
    static constexpr int DefaultTagVersion = 3;

    int newTagVersion = DefaultTagVersion; ///< 3 or 4: a file without an ID3v2 tag gets one of ID3v2.3 or 2.4
    bool keepFileTimes = false;            ///< writing a tag leaves the file's time of modification as it was
    DoubleClick doubleClick = DoubleClick::Open;
    QString hiddenColumns; ///< names of the file list's hidden columns, with blanks between them

    /// A stored text that stands for nothing known gives the default.
    static FurtherOptions restored(const Settings &settings);
    /// Takes effect for the file with Settings::save(). What means the same as what is stored is not written: a value
    /// that only a later version knows stays as long as the user chooses no other.
    void store(Settings &settings) const;

    bool operator==(const FurtherOptions &) const = default;
};

} // namespace ravlin
