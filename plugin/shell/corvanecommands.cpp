// The command table and the commands of the shell itself.
#include <iterator>

#include "core/printf.h"
#include "host/acedmenu.h"
#include "host/acedprompts.h"
#include "host/acvalue.h"
#include "host/hostsystem.h"
#include "host/hostui.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane {

namespace {

constexpr CCorvaneApp::Command kCommands[] = {
    {L"_Corvane_Test", L"Corvane_Test", &CCorvaneApp::Corvane_Test},
    {L"_Corvane_Insert_Fields_To_Drawings", L"Corvane_Insert_Fields_To_Drawings",
     &CCorvaneApp::Corvane_Insert_Fields_To_Drawings},
    {L"_Corvane_Multi_Cell_Fields", L"Corvane_Multi_Cell_Fields", &CCorvaneApp::Corvane_Multi_Cell_Fields},
    {L"_Corvane_Define_Object", L"Corvane_Define_Object", &CCorvaneApp::Corvane_Define_Object},
    {L"_Corvane_List_DefObj_InSession", L"Corvane_List_DefObj_InSession",
     &CCorvaneApp::Corvane_List_DefObj_InSession},
    {L"_Corvane_Workbooks_Manager", L"Corvane_Workbooks_Manager", &CCorvaneApp::Corvane_Workbooks_Manager},
    {L"_Corvane_AutoFill_Formulas", L"Corvane_AutoFill_Formulas", &CCorvaneApp::Corvane_AutoFill_Formulas},
    {L"_Corvane_Update_Fields_In_Excel", L"Corvane_Update_Fields_In_Excel",
     &CCorvaneApp::Corvane_Update_Fields_In_Excel},
    {L"_Corvane_Export_Fields_to_Excel", L"Corvane_Export_Fields_to_Excel",
     &CCorvaneApp::Corvane_Export_Fields_to_Excel},
    {L"_Corvane_Website", L"Corvane_Website", &CCorvaneApp::Corvane_Website},
    {L"_Corvane_About", L"Corvane_About", &CCorvaneApp::Corvane_About},
    {L"_Corvane_Support", L"Corvane_Support", &CCorvaneApp::Corvane_Support},
    {L"_Corvane_Faq", L"Corvane_Faq", &CCorvaneApp::Corvane_Faq},
    {L"_Corvane_New", L"Corvane_New", &CCorvaneApp::Corvane_New},
    {L"_Corvane_Demo", L"Corvane_Demo", &CCorvaneApp::Corvane_Demo},
    {L"_Corvane_Help", L"Corvane_Help", &CCorvaneApp::Corvane_Help},
    {L"_Corvane_Live_Update", L"Corvane_Live_Update", &CCorvaneApp::Corvane_Live_Update},
    {L"_Corvane_LoadMenu", L"Corvane_LoadMenu", &CCorvaneApp::Corvane_LoadMenu},
};

// The product's pages on the web.
constexpr const wchar_t* kWebsite = L"https://halvek.example/corvane/";
constexpr const wchar_t* kSupport = L"mailto:support@halvek.example?subject=Corvane";
constexpr const wchar_t* kFaq = L"https://halvek.example/corvane/faq/";
constexpr const wchar_t* kWhatsNew = L"https://halvek.example/corvane/whats-new/";
constexpr const wchar_t* kDemoPage = L"https://halvek.example/corvane/demo/";
constexpr const wchar_t* kDownloads = L"https://halvek.example/corvane/downloads/";

constexpr const wchar_t* kVersion = L"0.1.0";

// A pull-down menu is there while the query for its first item answers with a keyword.
constexpr int kMenuPresent = host::RTKWORD;

}  // namespace

std::span<const CCorvaneApp::Command> CCorvaneApp::commands() { return kCommands; }

void CCorvaneApp::Corvane_Test() {
  const std::wstring text = services_.formatValue(host::AcValue(6.6875), L"");
  services_.print(core::format(L"\n%s", text));
}

void CCorvaneApp::Corvane_LoadMenu() {
  if (!session_) return;
  const std::wstring path = menuFilePath();
  if (session_->system().fileExists(path)) {
    session_->command({L"_.menuload", path});
    int n = 1;
    while (session_->menus().menuCmd(core::format(L"P%d.1=?", n)) == kMenuPresent) ++n;
    // The new menu goes before the host's last two.
    const int position = n < 3 ? n : n - 2;
    session_->menus().menuCmd(core::format(L"P%d=+%s.pop1", position, kProductName));
  }
  if (!session_->menus().isMenuGroupLoaded(kProductName)) {
    services_.print(core::format(
        L"\nFailed to load the menu and toolbar of %s. Please load %s.cuix from the installation folder of %s "
        L"manually.",
        kProductName, kProductName, kProductName));
  }
}

void CCorvaneApp::Corvane_Help() {
  if (!session_) return;
  session_->system().shellExecute(L"open", helpFilePath(), host::SW_SHOWNORMAL);
}

void CCorvaneApp::openPage(const wchar_t* address) {
  if (!session_) return;
  session_->system().shellExecute(L"open", address, host::SW_SHOWNORMAL);
}

void CCorvaneApp::Corvane_Website() { openPage(kWebsite); }
void CCorvaneApp::Corvane_Support() { openPage(kSupport); }
void CCorvaneApp::Corvane_Faq() { openPage(kFaq); }
void CCorvaneApp::Corvane_New() { openPage(kWhatsNew); }
void CCorvaneApp::Corvane_Demo() { openPage(kDemoPage); }

void CCorvaneApp::Corvane_Live_Update() {
  // No version service is asked from inside the host: the download page lists the newest.
  services_.print(core::format(L"\n%s %s. The newest version is listed at %s", kProductName, kVersion, kDownloads));
  openPage(kDownloads);
}

void CCorvaneApp::Corvane_About() {
  if (!session_) return;
  session_->ui().messageBox(
      core::format(L"%s %s\nLive fields for drawings: formulas, table cells, areas, lengths, block counts, Excel "
                   L"cells, text files and objects of other drawings.\n\n%s",
                   kProductName, kVersion, kWebsite),
      kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
}

void CCorvaneApp::notAvailable(const wchar_t* localName) {
  services_.print(core::format(L"\n%s is not available in this build.", localName));
}


}  // namespace corvane
