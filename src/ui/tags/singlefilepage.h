// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/captiontable.h"
#include "core/tags/mpeg/streamdetails.h"
#include "core/tags/record/unsavededits.h"
#include "core/tags/store/saveoutlook.h"
#include "ui/controls/pagearea.h"
#include "ui/controls/pagecontext.h"

#include <array>
#include <optional>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace ravlin {

class ConversionBox;
class DigitsEdit;
class ElidedLabel;
class OutlookHint;
class PlainLabel;
class StreamPanel;
class TagStore;

/// The page that edits the tag of one file: shows the tag of the list's current row, writes it into every selected
/// file, steps through the list and removes tags.
///
/// Its window calls ShowCurrent() when the list's current row changes, reset() after every listing, selectionChanged()
/// when the selection changes, and applyCaptions() when the language does.
class SingleFilePage : public PageArea
{
    Q_OBJECT

public:
    explicit SingleFilePage(const PageContext &context, QWidget *parent = nullptr);

    /// Fills the page from the file of the current row. Without a current row, same as reset().
    void ShowCurrent();
    /// Empties the page: no file is shown and nothing can be saved.
    void reset();
    /// Moves the focus to the title and selects all of it.
    void startEditing();
    /// Shows how many files a save would write.
    void selectionChanged();
    void applyCaptions();

    /// The tag of the file that is shown, as it was read; all empty if there is none.
    const TagRecord &shownRecord() const { return m_record; }
    bool isShowingFile() const { return m_isShowingFile; }

    /// What the page holds beyond what it showed: typed and not saved.
    std::optional<UnsavedEdits> unsavedEdits() const;
    /// Puts texts that were typed before onto the page, which shows their file.
    void putBack(const TagRecord &typed);
    QAbstractButton *saveButton() const override;

Q_SIGNALS:
    /// The page no longer holds what was typed: it shows another file, or a save did not go through.
    void editsLeft(const UnsavedEdits &edits);

protected:
    void applyIcons() override;

private:
    void createControls();
    QWidget *createContent();
    void connectControls();
    void setTabOrder();

    void save();
    void step(qsizetype rows);
    QStringList aboveLimit(const QStringList &paths);
    void removeTag(Caption caption, Result<void> (TagStore::*remove)(const QString &));
    void listAgain();
    void showHint();

    TagRecord page() const;
    OutlookReader::Prepare preparing() const;
    TagEdits edits() const;
    bool isRefused();
    void showPage(const TagRecord &record);
    void leaveEdits();
    void setSavingEnabled(bool enabled);

    PageContext m_context;
    TagRecord m_record;
    QString m_path;                  ///< of the shown file
    TagRecord m_shown;               ///< the page as it was filled: what differs was typed
    platform::FileInfo m_shownState; ///< of the shown file when it was read
    bool m_isShowingFile = false;
    bool m_isTagTooLarge = false; ///< of the shown file; part of it was not read
    StreamDetailsReader m_streamReader;

    QLineEdit *m_title = nullptr;
    QLineEdit *m_artist = nullptr;
    QLineEdit *m_album = nullptr;
    DigitsEdit *m_year = nullptr;
    DigitsEdit *m_track = nullptr;
    QLineEdit *m_comment = nullptr;
    QComboBox *m_genre = nullptr;
    QPushButton *m_save = nullptr;
    QPushButton *m_next = nullptr;
    QPushButton *m_previous = nullptr;
    QPushButton *m_removeV1 = nullptr;
    QPushButton *m_removeV2 = nullptr;
    ConversionBox *m_conversion = nullptr; ///< op4_2, ccase_2
    ElidedLabel *m_fileName = nullptr;
    PlainLabel *m_hint = nullptr;
    OutlookHint *m_outlook = nullptr;
    StreamPanel *m_streamPanel = nullptr;

    struct FieldLabel
    {
        Caption caption;
        PlainLabel *label;
        QWidget *field;
    };
    std::array<FieldLabel, 7> m_fields{}; ///< in tab order
};

} // namespace ravlin
