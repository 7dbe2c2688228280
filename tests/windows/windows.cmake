# SPDX-License-Identifier: GPL-3.0-or-later
# The tests of a build for Windows. They run as Windows programs under Wine, in a prefix (a Windows disk with its registry)
# of the build folder. docs/windows.md says how, and what Wine lacks.

find_program(RAVLIN_WINE NAMES wine NO_CMAKE_FIND_ROOT_PATH)
if(NOT RAVLIN_WINE)
    message(WARNING "There is no Wine: the tests are built, but can't be run (package group windows)")
endif()
execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=libstdc++-6.dll
    OUTPUT_VARIABLE ravlin_compiler_library OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(ravlin_compiler_folder "${ravlin_compiler_library}" REALPATH)
get_filename_component(ravlin_compiler_folder "${ravlin_compiler_folder}" DIRECTORY)

set(RAVLIN_WINE_PREFIX "${CMAKE_BINARY_DIR}/wine")
set(RAVLIN_TEST_START "${CMAKE_CURRENT_SOURCE_DIR}/windows/under-wine" "${RAVLIN_WINE_PREFIX}"
    "${RAVLIN_WINDOWS_QT}" "${ravlin_compiler_folder}")
set(RAVLIN_TEST_LABELS windows)
set(RAVLIN_TEST_FIXTURES wine)
set(RAVLIN_TEST_ROOT "Z:") # the drive that stands for the computer's whole disk

# Tests that are not for Windows, each with its reason. tests/windows/ checks there what they check of our own code.
set(RAVLIN_NOT_FOR_WINDOWS
    # They call POSIX in the test itself: permission bits, owners, pipes, extended attributes, limits of resources, or
    # processes that they fork in order to kill them.
    tst_exclusiverename tst_filesystem tst_safewrite tst_safewritefaults tst_safewritefull tst_safewritekill tst_tagkill
    tst_bothkinds tst_renamingkill tst_transferkill tst_transferfaults tst_foreigntext tst_changerecord tst_twowriters
    tst_unfinishedsave
    # The trash and the desktop entries of freedesktop.org.
    tst_trash tst_trashsizes tst_drives tst_desktop)
foreach(name IN LISTS RAVLIN_NOT_FOR_WINDOWS)
    list(FILTER RAVLIN_TEST_SOURCES EXCLUDE REGEX "/${name}\\.cpp$")
endforeach()
# packaging/windows/provide-taglib makes the witness of what is read from tags.
set(RAVLIN_WINDOWS_TAGLIB "${RAVLIN_WINDOWS_CACHE}/taglib")
if(NOT EXISTS "${RAVLIN_WINDOWS_TAGLIB}/lib/libtag.a")
    message(WARNING "There is no TagLib for Windows: nothing is compared with it")
    list(FILTER RAVLIN_TEST_SOURCES EXCLUDE REGEX "/tst_taglibwitness\\.cpp$")
endif()
file(GLOB RAVLIN_WINDOWS_TESTS CONFIGURE_DEPENDS windows/tst_*.cpp)
list(APPEND RAVLIN_TEST_SOURCES ${RAVLIN_WINDOWS_TESTS})

# Functions that are left out of tests that run.
# They remove the trash of freedesktop.org; tst_windowsoperations checks what the recycle bin does not take.
set(RAVLIN_LEFT_OUT_tst_fileoperations withoutTrashAPlainQuestion aYesToTheTrashIsNoneToLosing)
# Permission bits and symbolic links as POSIX has them.
set(RAVLIN_LEFT_OUT_tst_settings aSymbolicLinkStays permissions)
# Wine counts a link for an open file that was deleted.
set(RAVLIN_LEFT_OUT_tst_leftovers aFileThatACleanerTookIsMadeAnew)
# Wine looks a name in a held folder up by the path that the folder had when it was opened.
set(RAVLIN_LEFT_OUT_tst_windowsfiles aHeldFolderStaysWhatItIsWhateverItsPathLeadsTo)
# The environment names the proxy there; on Windows the system's settings do.
set(RAVLIN_LEFT_OUT_tst_webroute proxies)
# Names that are not valid Unicode, and two names that differ in case alone.
set(RAVLIN_LEFT_OUT_tst_folderscan namesThatAreNoUnicodeAreListedAndFoundAgain)
set(RAVLIN_LEFT_OUT_tst_clsfilefunc hardLinksInOtherCaseAreTaken
    caseAloneWhereCaseCounts) # Wine does not change a name's case alone, but reports success
# Wine's schannel cannot load the certificate of the tests' servers.
set(RAVLIN_LEFT_OUT_tst_ufreedb encryptedServer)
set(RAVLIN_LEFT_OUT_tst_webtext certificateThatNobodyTrusts certificateOfAnotherName encryptedAnswer
    neverFromEncryptedToPlain
    # The environment names the proxy there; on Windows the system's settings do, which all tests share.
    systemProxyIsUsed proxyIsLeftOutForThisComputer proxyThatIsNotThere)
set(RAVLIN_LEFT_OUT_tst_mainform anAddressThatIsLessSecureIsRefused)
set(RAVLIN_LEFT_OUT_tst_versioncheck certificates neverFromEncryptedToPlain)
set(RAVLIN_LEFT_OUT_tst_inetretreive encryptedAndRedirectedFiles neverFromEncryptedToPlain)
# They measure time, or the width of texts in a font that Wine lacks.
set(RAVLIN_LEFT_OUT_tst_busy shortWorkIsNotSlowedDown)
set(RAVLIN_LEFT_OUT_tst_singlefilepagelook nothingIsCutInAnyLanguage aLongFileNameLosesItsMiddleOnly
    theSizeHintsHoldBeforeThePageIsShown)
set(RAVLIN_LEFT_OUT_tst_layout aWindowOfOrdinaryWidthScrollsNoPage theButtonThatStartsTheWorkStaysInItsPlace
    theFootHoldsItsHintBesideOrAboveTheButtons)
set(RAVLIN_LEFT_OUT_tst_opciones itFitsTheScreenInAnyLetters)
set(RAVLIN_LEFT_OUT_tst_historial itFitsASmallScreen)
set(RAVLIN_LEFT_OUT_tst_principallook theTabKeyGoesAsTheEyeDoes)

# The prefix is created first and its server kept running: starting both takes longer than most tests.
add_test(NAME windows/prefix COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/windows/prefix" start "${RAVLIN_WINE_PREFIX}")
add_test(NAME windows/prefix-end COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/windows/prefix" end "${RAVLIN_WINE_PREFIX}")
set_tests_properties(windows/prefix PROPERTIES FIXTURES_SETUP wine LABELS windows TIMEOUT 300)
set_tests_properties(windows/prefix-end PROPERTIES FIXTURES_CLEANUP wine LABELS windows TIMEOUT 60)

# The packed program in a window; tests/windows/run packs it first. It runs alone, since it waits for what is shown.
add_test(NAME windows/installed
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/support/with-own-home" /usr/bin/python3
        "${CMAKE_CURRENT_SOURCE_DIR}/windows/test_installed.py")
set_tests_properties(windows/installed PROPERTIES
    LABELS windows TIMEOUT 900 RUN_SERIAL TRUE
    ENVIRONMENT "RAVLIN_PACKAGES=${CMAKE_BINARY_DIR};RAVLIN_EVIDENCE_DIR=${CMAKE_BINARY_DIR}/e2e-evidence;PYTHONDONTWRITEBYTECODE=1")
