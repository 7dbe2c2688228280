#include "app/texttable.h"

namespace ravlin {

namespace {

struct Row
{
    Text text{};
    LanguageTexts languages;
};

// In lower case and without a full stop, as the captions are.
constexpr std::array<Row, TextCount> Rows{{
    {Text::ErrorNotFound, {u"the file or folder does not exist", u"el fichero o la carpeta no existe",
                              u"le fichier ou le dossier n'existe pas"}},
    {Text::ErrorAlreadyExists,
        {u"a file or folder of that name exists already", u"ya existe un fichero o una carpeta con ese nombre",
            u"un fichier ou un dossier de ce nom existe déjà"}},
    {Text::ErrorNotAFile,
        {u"this is not an ordinary file", u"no es un fichero normal", u"ce n'est pas un fichier ordinaire"}},
    {Text::ErrorAccessDenied, {u"the system refuses access to the file", u"el sistema deniega el acceso al fichero",
                                  u"le système refuse l'accès au fichier"}},
    {Text::ErrorReadOnly,
        {u"the file is read-only", u"el fichero es de solo lectura", u"le fichier est en lecture seule"}},
    {Text::ErrorNoSpace, {u"the disk is full", u"el disco está lleno", u"le disque est plein"}},
    {Text::ErrorIo, {u"the system could not read or write the file", u"el sistema no pudo leer o escribir el fichero",
                        u"le système n'a pas pu lire ou écrire le fichier"}},
    {Text::ErrorChangedMeanwhile,
        {u"another program has changed the file meanwhile", u"otro programa ha cambiado el fichero entretanto",
            u"un autre programme a modifié le fichier entre-temps"}},
    {Text::ErrorVerifyFailed, {u"the written file could not be verified", u"no se pudo verificar el fichero escrito",
                                  u"le fichier écrit n'a pas pu être vérifié"}},
    {Text::ErrorBrokenTag, {u"the tag is damaged and is left as it is", u"la etiqueta está dañada y se deja como está",
                               u"le tag est endommagé et reste tel quel"}},
    {Text::ErrorTooLarge, {u"the value is too large for the tag", u"el valor es demasiado grande para la etiqueta",
                              u"la valeur est trop grande pour le tag"}},
    {Text::ErrorGenreOutOfRange,
        {u"the genre number is not in the genre table", u"el número de estilo no está en la tabla de estilos",
            u"le numéro de genre n'est pas dans la table des genres"}},
    {Text::ErrorNoStream, {u"no mpeg audio was found in the file", u"no se encontró audio mpeg en el fichero",
                              u"aucun son mpeg n'a été trouvé dans le fichier"}},
    {Text::ErrorSettings, {u"the settings cannot be read or saved", u"la configuración no se puede leer o guardar",
                              u"les réglages ne peuvent pas être lus ou sauvegardés"}},
    {Text::ErrorInvalidArgument,
        {u"what was asked for does not exist", u"lo que se pide no existe", u"ce qui est demandé n'existe pas"}},
    {Text::ErrorUnsupported, {u"the system cannot do this here", u"el sistema no puede hacer esto aquí",
                                 u"le système ne peut pas faire cela ici"}},
    // %1: a number above 1
    {Text::HintManyFiles, {u"goes into %1 files", u"se guarda en %1 archivos", u"ira dans %1 fichiers"}},
    {Text::HintNoFile, {u"no file is selected", u"ningún archivo seleccionado", u"aucun fichier sélectionné"}},
    {Text::TipSaveOneFile,
        {u"write this tag into the selected file", u"guarda esta etiqueta en el archivo seleccionado",
            u"écrire ce tag dans le fichier sélectionné"}},
    {Text::TipSaveManyFiles, {u"write this one tag into all %1 selected files, with every field, empty ones too",
                                 u"guarda esta misma etiqueta en los %1 archivos seleccionados, con todos los campos, "
                                 u"también los vacíos",
                                 u"écrire ce même tag dans les %1 fichiers sélectionnés, avec tous les champs, même "
                                 u"vides"}},
    {Text::TipPreviousFile, {u"show the file above in the list; changes that are not saved are lost",
                                u"muestra el archivo anterior de la lista; los cambios sin guardar se pierden",
                                u"afficher le fichier précédent de la liste ; les changements non sauvegardés sont "
                                u"perdus"}},
    {Text::TipNextFile, {u"show the file below in the list; changes that are not saved are lost",
                            u"muestra el archivo siguiente de la lista; los cambios sin guardar se pierden",
                            u"afficher le fichier suivant de la liste ; les changements non sauvegardés sont perdus"}},
    {Text::TipRemoveTag,
        {u"take this tag away from all selected files", u"quita esta etiqueta de todos los archivos seleccionados",
            u"retirer ce tag de tous les fichiers sélectionnés"}},
    {Text::TipConvertOnSave, {u"convert title, artist, album and comment when saving",
                                 u"convierte título, artista, álbum y comentarios al guardar",
                                 u"convertir titre, artiste, album et commentaire en sauvegardant"}},
    {Text::TipYear, {u"four digits, or empty", u"cuatro cifras, o vacío", u"quatre chiffres, ou vide"}},
    {Text::TipTrack, {u"one or two digits, or empty", u"una o dos cifras, o vacío", u"un ou deux chiffres, ou vide"}},
    // Names of the window's parts for who can't see them.
    {Text::NameToolbar, {u"toolbar", u"barra de herramientas", u"barre d'outils"}},
    {Text::NameFolders, {u"folders", u"carpetas", u"dossiers"}},
    {Text::NameSplitter, {u"width of the folders", u"ancho de las carpetas", u"largeur des dossiers"}},
    {Text::NamePages, {u"working modes", u"modos de trabajo", u"modes de travail"}},
    {Text::NameFormerTabs, {u"tabs to the left", u"pestañas de la izquierda", u"onglets de gauche"}},
    {Text::NameFurtherTabs, {u"tabs to the right", u"pestañas de la derecha", u"onglets de droite"}},
    {Text::NameStatusBar, {u"status bar", u"barra de estado", u"barre d'état"}},
    {Text::TitleWaiting, {u"one moment, please", u"un momento, por favor", u"un instant, s'il vous plaît"}},
}};

consteval bool isComplete()
{
    for (int i = 0; i < TextCount; ++i) {
        const Row &row = Rows[size_t(i)];
        if (row.text != static_cast<Text>(i) || row.languages.english.isEmpty() || row.languages.spanish.isEmpty() ||
            row.languages.french.isEmpty())
            return false;
    }
    return true;
}
static_assert(isComplete(), "every Text needs its row, in order, in all three languages");

} // namespace

const LanguageTexts &languageTexts(Text text)
{
    return Rows[static_cast<size_t>(text)].languages;
}

} // namespace ravlin
