// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>

#include <array>

class QComboBox;
class QListWidget;
class QPushButton;

namespace ravlin {

class Captions;
class Settings;

/// The editor of the saved pattern lists: shows the patterns used for extracting tags, renaming files and renaming
/// folders, lets the user delete and reorder them, and stores them when it is accepted. Boxes that offer the lists need
/// PatternBox::refresh() then.
class PatternEditor : public QDialog
{
    Q_OBJECT

public:
    /// Both outlive the window.
    PatternEditor(Settings &settings, const Captions &captions, QWidget *parent = nullptr);

    void accept() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static constexpr int ListCount = 3;

    void createControls(const Captions &captions);
    void arrange(const Captions &captions);
    void showList();
    void keepList();
    void moveCurrent(int rows);
    void deleteCurrent();
    void updateButtons();

    Settings &m_settings;
    std::array<QStringList, ListCount> m_lists; ///< as edited so far
    int m_shown = 0;                            ///< index of the list that is shown
    QComboBox *m_choice = nullptr;
    QListWidget *m_patterns = nullptr;
    QPushButton *m_up = nullptr;
    QPushButton *m_down = nullptr;
    QPushButton *m_delete = nullptr;
    QPushButton *m_save = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace ravlin
