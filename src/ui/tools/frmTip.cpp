#include "ui/tools/frmTip.h"

#include "app/mdlMain.h"
#include "app/settings.h"
#include "app/trap.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inFrmTip = "frmTip";
constexpr const char* tipsFile = "TipOfDay.txt";
constexpr std::size_t linesBeforeTips = 6;

std::string noTipsText() {
  const std::string strFile = tipsFile;
  return "No tips available\r\n\r\nThat the " + strFile + " file was not found? \r\n\r\nCreate a text file named " +
         strFile +
         " using NotePad with 1 tip per line, leaving first 6 lines empty. \r\n\r\nThen place it in the same directory "
         "as the application. \r\n\r\nOptionally, reinstall this program.";
}

}  // namespace

std::vector<std::string> TipsOfFile(const std::string& strText) {
  std::string strLines = replaceAll(strText, "\r\n", "\n");
  // A line end closes a line and doesn't begin one.
  if (!strLines.empty() && strLines.back() == '\n') strLines.pop_back();
  std::vector<std::string> tips = splitAt(strLines, '\n');
  tips.erase(tips.begin(), tips.begin() + static_cast<std::ptrdiff_t>(std::min(linesBeforeTips, tips.size())));
  for (std::string& tip : tips) tip = replaceAll(tip, "     ", "\r\n\r\n");
  return tips;
}

frmTip::frmTip(Program& program) : Form(inFrmTip), program_(program) {
  for (Control* control :
       std::initializer_list<Control*>{&lblTipText, &lblTipNum, &chkLoadTipsAtStartup, &cmdNextTip, &cmdOK})
    add(*control);
  caption = "Tip of the Day";
  cmdNextTip.onClick = [this] { showNext(); };
  cmdOK.isDefault = cmdOK.isCancel = true;
  cmdOK.onClick = [this] { close(); };
}

void frmTip::ShowUp() { program_.host.showModal(*this); }

void frmTip::load() {
  trap(program_, inFrmTip, "Form_Load", [&] {
    chkLoadTipsAtStartup.setChecked(ReadNumber(program_, "ShowTipOfDay") == 1);
    number_ = ReadNumber(program_, "DisplayedTipNum");
    std::string strPath = program_.main.gstrAppPath + tipsFile;
    if (!files::exists(strPath)) strPath = withSeparator(program_.state<TipsState>().strInstalledFolder) + tipsFile;
    if (!files::exists(strPath)) {
      lblTipText.setText(noTipsText());
      lblTipNum.setText("Error");
      return;
    }
    tips_ = TipsOfFile(decodeText(files::readWholeFile(strPath)));
    showNext();
  });
}

void frmTip::showNext() {
  if (tips_.empty()) return;
  const auto count = static_cast<std::int32_t>(tips_.size());
  number_ = number_ < 0 || number_ >= count ? 1 : number_ + 1;
  lblTipText.setText(tips_[static_cast<std::size_t>(number_ - 1)]);
  lblTipNum.setText("Tip number " + std::to_string(number_) + "/" + std::to_string(count));
}

void frmTip::unload() {
  trap(program_, inFrmTip, "Form_Unload", [&] {
    KeyStore::Change change(program_.store);
    SaveSetting(program_, *findSetting("ShowTipOfDay"), chkLoadTipsAtStartup.checked() ? 1 : 0);
    SaveSetting(program_, *findSetting("DisplayedTipNum"), number_);
    change.commit();
  });
}

}  // namespace qrel
