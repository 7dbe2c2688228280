// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/captiontable.h"
#include "ui/controls/pagearea.h"
#include "ui/controls/pagecontext.h"

#include <array>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace ravlin {

class ConversionBox;
class DigitsEdit;
class OutlookHint;
class PlainLabel;

struct MultiEditPage;
struct SessionChoices;
struct TagRecord;

/// The page that writes chosen fields into the tags of all selected files, numbers their tracks and converts their
/// texts. Fields that are not chosen stay as they are in each file.
///
/// Its window calls selectionChanged() when the selection changes, and applyCaptions() when the language does.
class MultiFilePage : public PageArea
{
    Q_OBJECT

public:
    explicit MultiFilePage(const PageContext &context, QWidget *parent = nullptr);

    /// The conversions, as the settings remember them.
    void showChoices(const SessionChoices &choices);
    void storeChoices(SessionChoices &choices) const;

    /// Shows how many files a run would write.
    void selectionChanged();
    void applyCaptions();
    QAbstractButton *saveButton() const override;

Q_SIGNALS:
    /// A run has ended and the list was filled again. The current row has to be shown again.
    void finished();

protected:
    void applyIcons() override;

private:
    /// A check box, the box that it enables, and the caption of both.
    struct Field
    {
        Caption caption;
        QCheckBox *check;
        QWidget *box;
    };

    void createControls();
    QWidget *createContent();
    void setTabOrder();
    void connectControls();
    void updateEnabling();
    void showHint();
    void alignColumns();
    void applyToolTips();
    MultiEditPage page() const;
    void showConverted(const TagRecord &boxes);
    void refuseYear();
    void run();

    PageContext m_context;

    QLineEdit *m_artist = nullptr;
    QLineEdit *m_album = nullptr;
    DigitsEdit *m_year = nullptr;
    QComboBox *m_genre = nullptr;
    QLineEdit *m_comment = nullptr;
    DigitsEdit *m_firstTrack = nullptr;
    QCheckBox *m_setsArtist = nullptr;
    QCheckBox *m_setsAlbum = nullptr;
    QCheckBox *m_setsYear = nullptr;
    QCheckBox *m_setsGenre = nullptr;
    QCheckBox *m_setsComment = nullptr;
    QCheckBox *m_setsTrack = nullptr;
    ConversionBox *m_caseConversion = nullptr;    ///< op4_1, ccase_1
    ConversionBox *m_replaceConversion = nullptr; ///< op4_4, ccase_4
    PlainLabel *m_hint = nullptr;
    OutlookHint *m_outlook = nullptr;
    QPushButton *m_save = nullptr;
    std::array<Field, 6> m_fields{}; ///< in tab order
};

} // namespace ravlin
