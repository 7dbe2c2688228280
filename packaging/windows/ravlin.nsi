; SPDX-License-Identifier: GPL-3.0-or-later
; The installer: for one user (no administrator needed) or for all, in three languages.
; packaging/windows/package defines VERSION, SIZE (KiB), ICON, LICENSE, OUTPUT and LISTS, the folder of install.nsh and
; uninstall.nsh.
;
; Command line: /S (no questions), /CurrentUser or /AllUsers, /filetypes (open MP3 files with ravlin!), /D=FOLDER (must come
; last, never in quotes). The uninstaller takes /S and /settings (remove the user's settings too).

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
Name "ravlin!"
OutFile "${OUTPUT}"
ManifestDPIAware true
BrandingText "ravlin! ${VERSION}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\ravlin"
!define PROGRAM_KEY "Software\ravlin"
!define CLASS "ravlin.mp3"
!define FORMER "ravlin.former" ; value of the extension's key that holds its former class

!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_DEFAULT_CURRENTUSER
!define MULTIUSER_INSTALLMODE_INSTDIR "ravlin"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${PROGRAM_KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${PROGRAM_KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_USE_PROGRAMFILES64
!include MultiUser.nsh
!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
; The installer may run as administrator, and the program must not: files of strangers are its work. The desktop starts it
; with the user's own rights.
!define MUI_FINISHPAGE_RUN "$WINDIR\explorer.exe"
!define MUI_FINISHPAGE_RUN_PARAMETERS "$\"$INSTDIR\ravlin.exe$\""
!define MUI_FINISHPAGE_RUN_TEXT "$(RunText)"
!insertmacro MUI_PAGE_LICENSE "${LICENSE}"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Spanish"
!insertmacro MUI_LANGUAGE "French"
!insertmacro MUI_RESERVEFILE_LANGDLL

LangString RunText ${LANG_ENGLISH} "Start ravlin!"
LangString RunText ${LANG_SPANISH} "Iniciar ravlin!"
LangString RunText ${LANG_FRENCH} "Lancer ravlin!"
LangString ProgramSection ${LANG_ENGLISH} "ravlin! (required)"
LangString ProgramSection ${LANG_SPANISH} "ravlin! (necesario)"
LangString ProgramSection ${LANG_FRENCH} "ravlin! (obligatoire)"
LangString ProgramAbout ${LANG_ENGLISH} "The program, its command-line companion and the libraries that they need."
LangString ProgramAbout ${LANG_SPANISH} "El programa, su versión para la línea de órdenes y las bibliotecas que necesitan."
LangString ProgramAbout ${LANG_FRENCH} "Le programme, sa version en ligne de commande et les bibliothèques dont ils ont besoin."
LangString MenuSection ${LANG_ENGLISH} "Start menu entry"
LangString MenuSection ${LANG_SPANISH} "Entrada en el menú Inicio"
LangString MenuSection ${LANG_FRENCH} "Entrée dans le menu Démarrer"
LangString MenuAbout ${LANG_ENGLISH} "An entry from which the program is started."
LangString MenuAbout ${LANG_SPANISH} "Una entrada con la que se inicia el programa."
LangString MenuAbout ${LANG_FRENCH} "Une entrée qui permet de lancer le programme."
LangString TypesSection ${LANG_ENGLISH} "Open MP3 files with ravlin!"
LangString TypesSection ${LANG_SPANISH} "Abrir los archivos MP3 con ravlin!"
LangString TypesSection ${LANG_FRENCH} "Ouvrir les fichiers MP3 avec ravlin!"
LangString TypesAbout ${LANG_ENGLISH} "A double click on an MP3 file shows its folder in ravlin! instead of playing the file."
LangString TypesAbout ${LANG_SPANISH} "Un doble clic en un archivo MP3 muestra su carpeta en ravlin! en vez de reproducirlo."
LangString TypesAbout ${LANG_FRENCH} "Un double-clic sur un fichier MP3 montre son dossier dans ravlin! au lieu de lire le fichier."
LangString TypeName ${LANG_ENGLISH} "MP3 audio"
LangString TypeName ${LANG_SPANISH} "Audio MP3"
LangString TypeName ${LANG_FRENCH} "Audio MP3"
LangString SettingsSection ${LANG_ENGLISH} "Your settings"
LangString SettingsSection ${LANG_SPANISH} "Su configuración"
LangString SettingsSection ${LANG_FRENCH} "Vos réglages"

Section "$(ProgramSection)" SectionProgram
    SectionIn RO
    !include "${LISTS}/install.nsh"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    WriteRegStr SHCTX "${PROGRAM_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "ravlin!"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "Publisher" "ravlin!"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\ravlin.exe"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode /S'
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE}
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "$(MenuSection)" SectionMenu
    CreateShortcut "$SMPROGRAMS\ravlin!.lnk" "$INSTDIR\ravlin.exe"
SectionEnd

; Sets the same three default values as clsFileFunc's MakeFileDefault. The uninstaller gives the extension its former class
; back.
Section /o "$(TypesSection)" SectionTypes
    ReadRegStr $0 SHCTX "Software\Classes\.mp3" ""
    ${If} $0 != "${CLASS}"
        WriteRegStr SHCTX "Software\Classes\.mp3" "${FORMER}" "$0"
    ${EndIf}
    WriteRegStr SHCTX "Software\Classes\${CLASS}" "" "$(TypeName)"
    WriteRegStr SHCTX "Software\Classes\.mp3" "" "${CLASS}"
    WriteRegStr SHCTX "Software\Classes\${CLASS}\shell\open\command" "" '"$INSTDIR\ravlin.exe" "%1"'
    ${RefreshShellIcons}
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
!insertmacro MUI_DESCRIPTION_TEXT ${SectionProgram} $(ProgramAbout)
!insertmacro MUI_DESCRIPTION_TEXT ${SectionMenu} $(MenuAbout)
!insertmacro MUI_DESCRIPTION_TEXT ${SectionTypes} $(TypesAbout)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Var GivenFolder

Function .onInit
    ; MULTIUSER_INIT replaces the folder given by /D=, so put it back.
    StrCpy $GivenFolder $INSTDIR
    !insertmacro MULTIUSER_INIT
    ${If} $GivenFolder != ""
        StrCpy $INSTDIR $GivenFolder
    ${EndIf}
    !insertmacro MUI_LANGDLL_DISPLAY
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/filetypes" $1
    ${IfNot} ${Errors}
        SectionSetFlags ${SectionTypes} 1
    ${EndIf}
FunctionEnd

Section "un.ravlin!"
    SectionIn RO
    !include "${LISTS}/uninstall.nsh"
    Delete "$INSTDIR\uninstall.exe"
    ; Remove the folder only if it is empty: the user may keep other files there.
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\ravlin!.lnk"

    ReadRegStr $0 SHCTX "Software\Classes\.mp3" ""
    ${If} $0 == "${CLASS}"
        ReadRegStr $0 SHCTX "Software\Classes\.mp3" "${FORMER}"
        ${If} $0 == ""
            DeleteRegValue SHCTX "Software\Classes\.mp3" ""
        ${Else}
            WriteRegStr SHCTX "Software\Classes\.mp3" "" "$0"
        ${EndIf}
    ${EndIf}
    DeleteRegValue SHCTX "Software\Classes\.mp3" "${FORMER}"
    DeleteRegKey /ifempty SHCTX "Software\Classes\.mp3"
    DeleteRegKey SHCTX "Software\Classes\${CLASS}"
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    DeleteRegKey SHCTX "${PROGRAM_KEY}"
    ${un.RefreshShellIcons}
SectionEnd

Section /o "un.$(SettingsSection)" SectionSettings
    Delete "$APPDATA\ravlin\ravlin.ini"
    RMDir "$APPDATA\ravlin"
SectionEnd

Function un.onInit
    !insertmacro MULTIUSER_UNINIT
    !insertmacro MUI_UNGETLANGUAGE
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/settings" $1
    ${IfNot} ${Errors}
        SectionSetFlags ${SectionSettings} 1
    ${EndIf}
FunctionEnd
