; The installer of Kestrane_P3D. scripts/package-windows calls makensis with
;   VERSION  of the program, as 1.2.3
;   STAGE    the folder whose content is installed
;   REMOVALS a script with what the uninstaller takes away: the content of STAGE, nothing else
;   ICON     of the program
;   OUTPUT   the installer to write

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true

!define NAME "Kestrane_P3D"
!define PROGRAM "${NAME}.exe"
!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"

; An administrator chooses between all users and the current one; anybody else installs for himself.
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "${NAME}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_FUNCTION keepAskedFolder
!include MultiUser.nsh
!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh

Name "${NAME}"
OutFile "${OUTPUT}"
BrandingText "${NAME} ${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installer of ${NAME}"
VIAddVersionKey CompanyName "the ${NAME} authors"
VIAddVersionKey LegalCopyright "Copyright the ${NAME} authors"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_WELCOMEPAGE_TEXT "This installs ${NAME} ${VERSION}, or updates the one that is installed.$\r$\n$\r$\n\
  Close ${NAME} first. An update keeps your settings, your airport files, what the program has learned and what \
  it has scanned."
!define MUI_FINISHPAGE_TEXT "${NAME} ${VERSION} is installed. Start it from the Start menu.$\r$\n$\r$\n\
  Its manual is manual.md in the folder docs."
!define MUI_UNCONFIRMPAGE_TEXT_TOP "This removes the program. Your settings and all files that the program has made stay: \
  delete the folder yourself if you do not want them any more."
!insertmacro MUI_PAGE_WELCOME
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

Var askedFolder ; where the installation has to go, whoever it is for; empty: where MultiUser puts it

Function keepAskedFolder
  ${If} $askedFolder != ""
    StrCpy $INSTDIR $askedFolder
  ${EndIf}
FunctionEnd

Function .onInit
  ; Until MultiUser sets it, $INSTDIR is what /D= says.
  StrCpy $askedFolder $INSTDIR
  ; The program fetches a newer installer into its own folder: that is the installation to update.
  ${If} $askedFolder == ""
  ${AndIf} ${FileExists} "$EXEDIR\${PROGRAM}"
    StrCpy $askedFolder $EXEDIR
  ${EndIf}
  !insertmacro MULTIUSER_INIT
FunctionEnd

Function un.onInit
  !insertmacro MULTIUSER_UNINIT
FunctionEnd

; Windows writes into no program that runs.
!macro WaitUntilClosed
  ${If} ${FileExists} "$INSTDIR\${PROGRAM}"
    ${Do}
      ClearErrors
      FileOpen $0 "$INSTDIR\${PROGRAM}" a
      ${IfNot} ${Errors}
        FileClose $0
        ${ExitDo}
      ${EndIf}
      MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "${NAME} is running, or you may not write into its folder:$\r$\n\
        $INSTDIR$\r$\n$\r$\nClose the program, then try again." /SD IDCANCEL IDRETRY +3
      SetErrorLevel 2
      Quit
    ${Loop}
  ${EndIf}
!macroend

; The program keeps its work in its folder, so everybody who may start it has to write there; not into the programs.
!macro ShareFolder
  nsExec::Exec 'icacls "$INSTDIR" /grant "*S-1-5-32-545:(OI)(CI)M"'
  Pop $0
  !insertmacro ProtectProgram "${PROGRAM}"
  !insertmacro ProtectProgram "kestrane-data.exe"
  !insertmacro ProtectProgram "uninstall.exe"
!macroend
!macro ProtectProgram FILE
  nsExec::Exec 'icacls "$INSTDIR\${FILE}" /inheritance:r /grant:r "*S-1-5-32-544:F" "*S-1-5-18:F" "*S-1-5-32-545:RX"'
  Pop $0
!macroend

Section
  !insertmacro WaitUntilClosed
  SetOutPath "$INSTDIR"
  SetOverwrite on
  File /r "${STAGE}/*"
  CreateDirectory "$INSTDIR\input"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ${If} $MultiUser.InstallMode == "AllUsers"
    !insertmacro ShareFolder
  ${EndIf}

  ; A shortcut starts its program in the folder that is current now.
  CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\${PROGRAM}"

  WriteRegStr SHCTX "${KEY}" DisplayName "${NAME}"
  WriteRegStr SHCTX "${KEY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${KEY}" Publisher "the ${NAME} authors"
  WriteRegStr SHCTX "${KEY}" DisplayIcon "$INSTDIR\${PROGRAM}"
  WriteRegStr SHCTX "${KEY}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${KEY}" UninstallString '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode /S'
  SectionGetSize 0 $0
  WriteRegDWORD SHCTX "${KEY}" EstimatedSize $0
  WriteRegDWORD SHCTX "${KEY}" NoModify 1
  WriteRegDWORD SHCTX "${KEY}" NoRepair 1
SectionEnd

Section un.Everything
  !insertmacro WaitUntilClosed
  SetOutPath "$TEMP" ; the current folder could not be removed
  !include "${REMOVALS}"
  Delete "$INSTDIR\install_new_version.exe"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR\input"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\${NAME}.lnk"
  DeleteRegKey SHCTX "${KEY}"
SectionEnd
