// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace ravlin {

class furtheroptions;
struct Program;

/// The options dialog: what the interface speaks, which tags a save writes, whether the last folder is opened again,
/// and how a CD database is asked; on a second page what furtheroptions has. It reads the settings when it is made and
/// writes them when it is accepted (button ok). Its button upd opens the window that looks for a new version.
///
/// A choice of language takes effect at once, for this dialog's own texts and for windows that apply their captions
/// later; without ok it lasts until the program ends. The tag-save mode shown is then the stored one again.
class opciones : public QDialog
{
    Q_OBJECT

public:
    /// Reads the settings anew. program outlives the dialog.
    explicit opciones(Program &program, QWidget *parent = nullptr);

    /// Writes the choices into the settings and puts them in force. When the settings' file can't be written a box
    /// tells so; the choices are in force all the same, and the program tries again when it ends.
    void accept() override;

private:
    void createControls();
    QWidget *createFirstPage();
    void createLayout();
    void load();
    void changeLanguage();
    void applyCaptions();
    void showStoredMode();
    void storeChoices();
    void openUpdate();
    void showSaveError(const QString &detail);

    Program &m_program;
    QTabWidget *m_pages = nullptr;
    furtheroptions *m_further = nullptr;
    QGroupBox *general = nullptr;
    QLabel *lidioma = nullptr;
    QComboBox *cidioma = nullptr;
    QLabel *Label1 = nullptr;
    QComboBox *ctags = nullptr;
    QCheckBox *opreme = nullptr;
    QGroupBox *freedb = nullptr;
    QLabel *lserver = nullptr;
    QLineEdit *tserver = nullptr;
    QLabel *lmail = nullptr;
    QLineEdit *tmail = nullptr;
    QGroupBox *m_update = nullptr; ///< update
    QPushButton *upd = nullptr;
    QPushButton *m_ok = nullptr;     ///< ok
    QPushButton *m_cancel = nullptr; ///< cancel
};

} // namespace ravlin
