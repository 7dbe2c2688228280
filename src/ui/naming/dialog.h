// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"
#include "core/naming/foldername.h"
#include "core/tags/record/tagrecord.h"
#include "ui/controls/pagecontext.h"

#include <QDialog>

#include <optional>

class QCheckBox;
class QPushButton;
class QRadioButton;

namespace ravlin {

class PatternBox;
class PlaceholderBox;
class PlainLabel;

/// The dialog that renames a folder after the tag of its first file: by artist and album, or by a pattern. Shows the
/// new name while the user edits the rule, and why the folder can't get it. If the name is taken it asks there whether
/// the folder keeps its name or gets a number.
///
/// Reads its settings when it is made and writes them whenever it is closed. Renames nothing itself: its opener does
/// when it is accepted.
class Dialog : public QDialog
{
    Q_OBJECT

public:
    /// folder: its path, with or without a separator at the end. firstFile: the file whose tag is used; empty if the
    /// folder's list is empty.
    Dialog(const PageContext &context, const QString &folder, const QString &firstFile, QWidget *parent = nullptr);

    /// The renaming by the chosen rule. Nothing if no rule is chosen, it makes no name, or there is no file with a
    /// readable tag.
    std::optional<RenameRow> wanted() const;

    void done(int result) override;

Q_SIGNALS:
    /// The user wants this renaming, and that answer if the name is taken. The dialog is already closed.
    void renameRequested(const RenameRow &wanted, ClashAnswer answer);

private:
    void createControls();
    void arrange();
    void connectControls();
    void applyCaptions();
    void showRule(const FolderRule &rule);
    FolderRule rule() const;
    ClashAnswer answer() const;
    void showNewName();
    QString reasonOf(const RenameRow &row) const;

    PageContext m_context;
    QString m_folder;
    std::optional<TagRecord> m_record; ///< of the first file; nothing if there is none, or it can't be read

    QCheckBox *m_byArtistAlbum = nullptr;
    QCheckBox *m_byPattern = nullptr;
    PatternBox *m_pattern = nullptr;
    PlaceholderBox *m_placeholders = nullptr; ///< lt_0 to lt_3
    PlainLabel *m_newNameLabel = nullptr;
    PlainLabel *m_newName = nullptr;
    QWidget *m_taken = nullptr; ///< the choice for a name that is taken
    QRadioButton *m_skip = nullptr;
    QRadioButton *m_number = nullptr;
    QPushButton *m_rename = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace ravlin
