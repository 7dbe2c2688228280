// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace ravlin {

class PlainLabel;
class ProtectionBox;
class furtheroptions;

struct Program;

/// The options dialog: the interface's language, which tags a save writes, whether the last folder is opened again, and
/// the CD database's server; furtheroptions is its second page. Reads the settings when it is made and writes them when
/// it is accepted (button ok). Its button upd opens the window that looks for a new version.
///
/// A choice of language takes effect at once, for this dialog's own texts and for windows that apply their captions
/// later; without ok it lasts until the program ends. It resets the shown tag-save mode to the stored one.
class opciones : public QDialog
{
    Q_OBJECT

public:
    /// Reads the settings' file again. program outlives the dialog.
    explicit opciones(Program &program, QWidget *parent = nullptr);

    /// For the very first start: ticks that the last folder is opened again, unless the settings say otherwise.
    void offerToRemember();
    /// Ticks the protections, for the user to agree; unless the settings say something about them.
    void offerProtection();

    /// Writes the choices into the settings and applies them. If the settings' file can't be written, a box says so;
    /// the choices apply all the same, and the program tries again when it ends.
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
    bool m_hasOffered = false; ///< the protections
    QTabWidget *m_pages = nullptr;
    furtheroptions *m_further = nullptr;
    QGroupBox *m_general = nullptr;
    PlainLabel *m_languageLabel = nullptr;
    QComboBox *m_language = nullptr;
    PlainLabel *m_modeLabel = nullptr;
    QComboBox *m_mode = nullptr;
    QCheckBox *m_remember = nullptr;
    QGroupBox *m_freedb = nullptr;
    PlainLabel *m_serverLabel = nullptr;
    QLineEdit *m_server = nullptr;
    PlainLabel *m_mailLabel = nullptr;
    QLineEdit *m_mail = nullptr;
    QGroupBox *m_update = nullptr;
    QPushButton *m_checkVersion = nullptr;
    ProtectionBox *m_protection = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace ravlin
