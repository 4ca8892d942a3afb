; The Corvandell installer, built on Linux with NSIS (makensis) by CMake's `installer`
; target and by scripts/package.
;
; Per user, never elevated: the program goes to %LOCALAPPDATA%\Programs\Corvandell, the
; Start-menu entry to the user's own Start menu and the Apps & features entry to HKCU, so
; a user without administrator rights can install, update and remove it.
;
; The uninstaller keeps the user's data folder (%APPDATA%\Corvandell: settings, the device
; key, skins, cloned browser games) unless the user ticks "Remove my settings and data" or
; passes /REMOVEDATA. Games installed into the library folder are the user's and are never
; touched. Both accept /S (silent).
;
; makensis -DVERSION=1.2.3 -DSOURCE_DIR=<folder of corvandell.exe> -DICON=<corvandell.ico>
;          -DOUTFILE=<setup.exe> corvandell.nsi

; A 64-bit installer for a 64-bit program: it needs no 32-bit subsystem, which Windows
; may lack (Server Core) and which a 64-bit-only Wine prefix lacks.
Target amd64-unicode
!ifndef VERSION | SOURCE_DIR | ICON | OUTFILE
    !error "VERSION, SOURCE_DIR, ICON and OUTFILE must be defined"
!endif

!define PRODUCT "Corvandell"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Corvandell"

!include "MUI2.nsh"
!include "FileFunc.nsh"
!include "LogicLib.nsh"

Name "${PRODUCT}"
OutFile "${OUTFILE}"
InstallDir "$LOCALAPPDATA\Programs\Corvandell"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
RequestExecutionLevel user
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10
BrandingText "${PRODUCT} ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=1033 "ProductName" "${PRODUCT}"
VIAddVersionKey /LANG=1033 "FileDescription" "${PRODUCT} setup"
VIAddVersionKey /LANG=1033 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "CompanyName" "${PRODUCT}"
VIAddVersionKey /LANG=1033 "LegalCopyright" "${PRODUCT}"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN "$INSTDIR\corvandell.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start ${PRODUCT}"
!define MUI_COMPONENTSPAGE_NODESC

!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

Section "${PRODUCT}" SecProgram
    SectionIn RO
    SetShellVarContext current
    SetOutPath "$INSTDIR"
    ; A running client holds its exe open; it would stay the old version.
    File "${SOURCE_DIR}/corvandell.exe"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\corvandell.exe" "" "$INSTDIR\corvandell.exe" 0

    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "${PRODUCT}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\corvandell.exe,0"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
SectionEnd

Section "un.${PRODUCT}" UnSecProgram
    SectionIn RO
    SetShellVarContext current
    Delete "$SMPROGRAMS\${PRODUCT}.lnk"
    Delete "$INSTDIR\corvandell.exe"
    Delete "$INSTDIR\uninstall.exe"
    ; Only if empty: files the user put there stay, and so does the folder.
    RMDir "$INSTDIR"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd

Section /o "un.Remove my settings and data" UnSecData
    SetShellVarContext current
    RMDir /r "$APPDATA\Corvandell"
SectionEnd

Function un.onInit
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/REMOVEDATA" $1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${UnSecData}
    ${EndIf}
FunctionEnd
