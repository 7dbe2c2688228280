// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/controls/pagearea.h"
#include "ui/controls/pagecontext.h"

class QPushButton;
class QRadioButton;

namespace ravlin {

class ConversionBox;
class PatternBox;
class PlaceholderBox;
class PlainLabel;
class RenamingPlan;

struct NamingRule;
struct SessionChoices;

/// The page that names files after their tags: the three rules, the pattern of the advanced one, the conversions of the
/// new name, the run and its preview.
///
/// Its window calls selectionChanged() when the selection changes, and applyCaptions() when the language does.
class RenamePage : public PageArea
{
    Q_OBJECT

public:
    explicit RenamePage(const PageContext &context, QWidget *parent = nullptr);

    /// The page's part of what the settings remember.
    void showChoices(const SessionChoices &choices);
    void storeChoices(SessionChoices &choices) const;

    /// Shows how many files a run would rename.
    void selectionChanged();
    void applyCaptions();

Q_SIGNALS:
    /// A run has ended and the list was filled again. The current row has to be shown again.
    void finished();

protected:
    void applyIcons() override;

private:
    void createControls();
    QWidget *createContent();
    void setTabOrder();
    void connectControls();
    void updateEnabling();
    void applyToolTips();
    int chosenRule() const;
    NamingRule rule() const;
    bool answerClashes(RenamingPlan &plan);
    void run();
    void showPreview();
    void rememberPattern();

    PageContext m_context;
    QRadioButton *m_byArtistTitle = nullptr;
    QRadioButton *m_byTrackTitle = nullptr;
    QRadioButton *m_byPattern = nullptr;
    PatternBox *m_pattern = nullptr;
    PlaceholderBox *m_placeholders = nullptr;     ///< lt_0 to lt_7
    ConversionBox *m_caseConversion = nullptr;    ///< op4_0, ccase_0
    ConversionBox *m_replaceConversion = nullptr; ///< op4_3, ccase_3
    PlainLabel *m_hint = nullptr;
    QPushButton *m_preview = nullptr;
    QPushButton *m_rename = nullptr;
};

} // namespace ravlin
