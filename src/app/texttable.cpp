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
    {Text::HintNothingChosen, {u"nothing is ticked", u"no hay nada marcado", u"rien n'est coché"}},
    // %1: a number above 1
    {Text::HintRenameFiles, {u"renames %1 files", u"renombra %1 archivos", u"renomme %1 fichiers"}},
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
    {Text::TipApplyField,
        {u"write this field into all selected files", u"guarda este campo en todos los archivos seleccionados",
            u"écrire ce champ dans tous les fichiers sélectionnés"}},
    {Text::TipAutoTrack, {u"number the selected files in the order of the list",
                             u"numera los archivos seleccionados en el orden de la lista",
                             u"numéroter les fichiers sélectionnés dans l'ordre de la liste"}},
    {Text::TipFirstTrack,
        {u"the number of the first file, 1 when empty; numbers above 99 are not written",
            u"el número del primer archivo, 1 si está vacío; los números mayores que 99 no se guardan",
            u"le numéro du premier fichier, 1 si vide ; les numéros au-dessus de 99 ne sont pas écrits"}},
    {Text::TipConvertEach, {u"convert title, artist, album and comment of each file",
                               u"convierte título, artista, álbum y comentarios de cada archivo",
                               u"convertir titre, artiste, album et commentaire de chaque fichier"}},
    {Text::TipApplyToAll,
        {u"write the ticked fields into all selected files; the other fields stay as they are",
            u"guarda los campos marcados en todos los archivos seleccionados; los demás campos quedan como están",
            u"écrire les champs cochés dans tous les fichiers sélectionnés ; les autres champs restent tels quels"}},
    {Text::TipMask,
        {u"how the file names are made up: text, and a variable where a field stands",
            u"cómo se componen los nombres de fichero: texto, y una variable donde hay un campo",
            u"comment les noms de fichiers sont composés : du texte, et une variable à la place de chaque champ"}},
    {Text::TipPlaceholder,
        {u"put this variable at the end", u"añade esta variable al final", u"ajouter cette variable à la fin"}},
    {Text::TipExtract, {u"take the names of the selected files apart and write the parts into their tags",
                           u"separa los nombres de los archivos seleccionados y guarda las partes en sus etiquetas",
                           u"décomposer les noms des fichiers sélectionnés et écrire les parties dans leurs tags"}},
    {Text::TipPreview, {u"show what would become of the selected files, without changing any",
                           u"muestra qué sería de los archivos seleccionados, sin cambiar ninguno",
                           u"montrer ce que deviendraient les fichiers sélectionnés, sans en changer aucun"}},
    {Text::TipNamingRule, {u"what the new names are made of", u"de qué se componen los nombres nuevos",
                              u"de quoi se composent les nouveaux noms"}},
    {Text::TipAdvancedPattern,
        {u"how the new names are made up: text, and a variable where a field shall stand",
            u"cómo se componen los nombres nuevos: texto, y una variable donde debe ir un campo",
            u"comment les nouveaux noms sont composés : du texte, et une variable à la place de chaque champ"}},
    {Text::TipConvertNames,
        {u"convert the new names", u"convierte los nombres nuevos", u"convertir les nouveaux noms"}},
    {Text::TipRename, {u"give the selected files new names made from their tags",
                          u"da a los archivos seleccionados nombres nuevos hechos con sus etiquetas",
                          u"donner aux fichiers sélectionnés de nouveaux noms tirés de leurs tags"}},
    // What the preview says about a file.
    {Text::RemarkLongName, {u"the name is longer than 64 characters", u"el nombre tiene más de 64 caracteres",
                               u"le nom dépasse 64 caractères"}},
    {Text::RemarkNoMatch, {u"the name does not fit the pattern; the file stays as it is",
                              u"el nombre no se ajusta a la máscara; el archivo queda como está",
                              u"le nom ne correspond pas au masque ; le fichier reste tel quel"}},
    {Text::RemarkKeepsName, {u"the name stays as it is", u"el nombre queda como está", u"le nom reste tel quel"}},
    {Text::RemarkAdjusted, {u"the name was adapted so that every system takes it",
                               u"el nombre se ha adaptado para que lo admita cualquier sistema",
                               u"le nom a été adapté pour que tout système l'accepte"}},
    {Text::NameEmpty,
        {u"the new name would be empty", u"el nombre nuevo quedaría vacío", u"le nouveau nom serait vide"}},
    {Text::NameDots, {u"the new name would be nothing but full stops", u"el nombre nuevo sería solo de puntos",
                         u"le nouveau nom ne serait fait que de points"}},
    {Text::NameReserved, {u"the name is kept for a device", u"ese nombre está reservado para un dispositivo",
                             u"ce nom est réservé à un périphérique"}},
    {Text::NameTooLong,
        {u"the name is longer than the system allows", u"el nombre es más largo de lo que permite el sistema",
            u"le nom est plus long que le système ne le permet"}},
    {Text::NameLeadsOutside, {u"the name would lead out of the folder", u"el nombre llevaría fuera de la carpeta",
                                 u"le nom mènerait hors du dossier"}},
    // %1, %2: numbers
    {Text::PreviewMarked, {u"marked: %1 of %2", u"marcados: %1 de %2", u"marqués : %1 sur %2"}},
    {Text::RemarkNumbered, {u"the file gets the name with a number", u"el archivo recibe el nombre con un número",
                               u"le fichier reçoit le nom avec un numéro"}},
    {Text::RemarkMakesFolder, {u"makes a new folder", u"crea una carpeta nueva", u"crée un nouveau dossier"}},
    // %1, %2: numbers
    {Text::HintRenamed, {u"renamed: %1; left as they were: %2", u"renombrados: %1; sin cambios: %2",
                            u"renommés : %1 ; inchangés : %2"}},
    // The question about a name that is taken; %1: that name, %2: the file's present one.
    {Text::ClashTitle, {u"name already taken", u"nombre ya existente", u"nom déjà pris"}},
    {Text::ClashQuestion, {u"“%1” exists already in this folder. what shall become of “%2”?",
                              u"«%1» ya existe en esta carpeta. ¿qué debe pasar con «%2»?",
                              u"« %1 » existe déjà dans ce dossier. que faire de « %2 » ?"}},
    {Text::ClashSkip, {u"&skip", u"&omitir", u"&ignorer"}},
    {Text::ClashKeepBoth,
        {u"&keep both, with a number", u"&conservar ambos, con un número", u"&garder les deux, avec un numéro"}},
    {Text::ClashStop, {u"s&top", u"&detener", u"a&rrêter"}},
    {Text::ClashForAll, {u"do the same &for all further clashes", u"hacer lo mismo con &todos los demás",
                            u"faire de même pour &tous les suivants"}},
    // Names of the window's parts for who can't see them.
    {Text::NameToolbar, {u"toolbar", u"barra de herramientas", u"barre d'outils"}},
    {Text::NameFolders, {u"folders", u"carpetas", u"dossiers"}},
    {Text::NameSplitter, {u"width of the folders", u"ancho de las carpetas", u"largeur des dossiers"}},
    {Text::NamePages, {u"working modes", u"modos de trabajo", u"modes de travail"}},
    {Text::NameFormerTabs, {u"tabs to the left", u"pestañas de la izquierda", u"onglets de gauche"}},
    {Text::NameFurtherTabs, {u"tabs to the right", u"pestañas de la derecha", u"onglets de droite"}},
    {Text::NameStatusBar, {u"status bar", u"barra de estado", u"barre d'état"}},
    {Text::TitleWaiting, {u"one moment, please", u"un momento, por favor", u"un instant, s'il vous plaît"}},
    {Text::LookupBadAddress, {u"the server's address is not valid", u"la dirección del servidor no es válida",
                                 u"l'adresse du serveur n'est pas valide"}},
    {Text::LookupBadContents, {u"these files do not make up a disc", u"estos archivos no forman un disco",
                                  u"ces fichiers ne forment pas un disque"}},
    {Text::LookupNoConnection,
        {u"the server cannot be reached", u"no se puede conectar con el servidor", u"le serveur est injoignable"}},
    {Text::LookupProxy, {u"the proxy refuses the connection", u"el proxy rechaza la conexión",
                            u"le serveur mandataire refuse la connexion"}},
    {Text::LookupTimedOut, {u"the server did not answer in time", u"el servidor no respondió a tiempo",
                               u"le serveur n'a pas répondu à temps"}},
    {Text::LookupTooLarge, {u"the server's answer is too long", u"la respuesta del servidor es demasiado larga",
                               u"la réponse du serveur est trop longue"}},
    {Text::LookupTooManyRedirects,
        {u"the server keeps sending us to another address", u"el servidor remite sin fin a otra dirección",
            u"le serveur renvoie sans fin vers une autre adresse"}},
    {Text::LookupInsecureRedirect, {u"the server sends us to an address that is not secure",
                                       u"el servidor remite a una dirección que no es segura",
                                       u"le serveur renvoie vers une adresse non sécurisée"}},
    {Text::LookupCertificate, {u"the server could not prove its identity, its certificate is not trusted",
                                  u"el servidor no pudo demostrar su identidad, su certificado no es de confianza",
                                  u"le serveur n'a pas pu prouver son identité, son certificat n'est pas fiable"}},
    {Text::LookupHttpStatus, {u"the web server refused the request", u"el servidor web rechazó la petición",
                                 u"le serveur web a refusé la requête"}},
    {Text::LookupGarbage, {u"the server's answer makes no sense", u"la respuesta del servidor no tiene sentido",
                              u"la réponse du serveur n'a pas de sens"}},
    {Text::LookupIncomplete, {u"the server's answer is not complete", u"la respuesta del servidor está incompleta",
                                 u"la réponse du serveur est incomplète"}},
    {Text::LookupNoEntry,
        {u"the server no longer has the disc that it offered", u"el servidor ya no tiene el disco que ofreció",
            u"le serveur n'a plus le disque qu'il proposait"}},
    {Text::LookupBrokenEntry,
        {u"the disc's entry is damaged on the server", u"la ficha del disco está dañada en el servidor",
            u"la fiche du disque est endommagée sur le serveur"}},
    {Text::LookupServerTrouble,
        {u"the server has a problem, try again later", u"el servidor tiene un problema, inténtelo más tarde",
            u"le serveur a un problème, réessayez plus tard"}},
    {Text::LookupNotGreeted, {u"the server does not accept the e-mail address of the options",
                                 u"el servidor no acepta el correo de las opciones",
                                 u"le serveur n'accepte pas l'adresse électronique des options"}},
    {Text::LookupRefused, {u"the server does not understand the question", u"el servidor no entiende la consulta",
                              u"le serveur ne comprend pas la demande"}},
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
