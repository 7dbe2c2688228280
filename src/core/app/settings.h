// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/inidocument.h"
#include "core/platform/error.h"

#include <QMap>
#include <QString>
#include <QStringView>

#include <optional>

namespace ravlin {

/// The keys of the settings, except those of the lists of used patterns (core/naming/patternhistory.h). All values are
/// texts, numbers as decimal digits.
namespace settingskey {

inline constexpr QStringView Ruta = u"ruta";            ///< path of the last shown folder
inline constexpr QStringView Recuerda = u"recuerda";    ///< "si" or "no": show that folder again at the next start
inline constexpr QStringView Idioma = u"idioma";        ///< interface language: "es", "en" or "fr"
inline constexpr QStringView Tags = u"tags";            ///< tag-save mode: "1" to "5"
inline constexpr QStringView Rename = u"rename";        ///< rename mode: "1", "2", "3" or empty
inline constexpr QStringView RenameVar = u"rename var"; ///< pattern of the advanced rename mode
/// Index in the list of conversions, or empty if the conversion is off; likewise the three below.
inline constexpr QStringView RenameCase = u"rename case";
inline constexpr QStringView MultiCase = u"multi case";
inline constexpr QStringView RenameReplace = u"rename replace";
inline constexpr QStringView MultiReplace = u"multi replace";
inline constexpr QStringView Servidor = u"servidor";                ///< host name of the CD-database server
inline constexpr QStringView Correo = u"correo";                    ///< e-mail address sent to that server
inline constexpr QStringView DirRename = u"dir rename";             ///< mode of the directory rename: "1", "2" or empty
inline constexpr QStringView DirRenameVar = u"dir rename var";      ///< pattern of the directory rename
inline constexpr QStringView ProtectionOffered = u"cuida ofrecido"; ///< "si": the user has seen the protections
inline constexpr QStringView Unsaved = u"sin guardar"; ///< texts typed and not saved when the window closed

} // namespace settingskey

/// The user's settings: texts under keys in the section "ini" of ravlin/ravlin.ini in the user's configuration folder.
///
/// Reads the file once, and again with reload(). Under a lock, save() puts only the keys written since then into the
/// file's present content, which keeps what other programs and instances have changed, as well as comments, foreign
/// sections and unknown keys. It replaces the file in one step. No state of the file stops the program: an unreadable
/// file counts as empty and is never overwritten. A file that is not text is kept aside as "ravlin.ini.damaged" before
/// a new one is written. See docs/decisions/0004-settings-file.md.
///
/// Used by one thread at a time.
class Settings
{
    Q_DISABLE_COPY_MOVE(Settings)

public:
    /// ravlin/ravlin.ini in $XDG_CONFIG_HOME or ~/.config; in %APPDATA% on Windows.
    static QString defaultPath();

    explicit Settings(QString path = defaultPath());

    /// The settings' file.
    const QString &path() const { return m_path; }

    /// The value written last, else the file's; empty for a key without a value.
    QString read(QStringView key) const;
    /// Takes effect for read() at once, for the file with save(). The key must suit IniDocument::setValue.
    void write(QStringView key, const QString &text);

    /// Reads the file again and keeps unsaved values. An error (Settings) leaves all values as they are.
    Result<void> reload();
    /// Puts unsaved values into the file, and others' changes of the file into these settings. An error (Settings)
    /// leaves the file as it is and the values unsaved.
    Result<void> save();

    /// What was wrong with the file at the last reading, if anything.
    const std::optional<Error> &problem() const { return m_problem; }

private:
    Error failure(const QString &detail) const;
    Result<QByteArray> readFile() const;
    Result<QString> keepAside(const QByteArray &bytes) const;
    Result<IniDocument> documentToChange(const QByteArray &bytes);
    Result<void> replaceFile(const QByteArray &bytes) const;

    QString m_path;
    IniDocument m_document;           ///< as last read or saved
    QMap<QString, QString> m_written; ///< since the last successful save, by key
    std::optional<Error> m_problem;
};

} // namespace ravlin
