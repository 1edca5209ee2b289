#include "desktop/help.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QKeySequence>
#include <QStyle>
#include <QTextBrowser>
#include <QToolBar>

namespace qrel {

namespace {

constexpr long indexTopic = 10;

// What the number at the beginning of a file's name says; -1 without one.
long topicOf(const QString& fileName) {
  qsizetype digits = 0;
  while (digits < fileName.size() && fileName[digits].isDigit()) ++digits;
  bool isNumber = false;
  const long topic = fileName.first(digits).toLong(&isNumber);
  return isNumber ? topic : -1;
}

QByteArray missingTopic(const QString& folder, const QUrl& file) {
  const QString name = QFileInfo(file.path()).fileName();
  const QString where = folder.isEmpty() ? QStringLiteral(
                                               "The help isn't installed with this program. Install it "
                                               "again, or read the folder `docs/help` of its sources.")
                                         : QStringLiteral("It isn't in the folder `%1`.").arg(folder);
  return QStringLiteral("# No help on this\n\nThere is no help topic \"%1\". %2\n").arg(name, where).toUtf8();
}

// Qt shows an empty page for a file that isn't there.
class Browser : public QTextBrowser {
 public:
  Browser(QString folder, QWidget* parent) : QTextBrowser(parent), folder_(std::move(folder)) {}

  QVariant loadResource(int type, const QUrl& name) override {
    if (type == QTextDocument::MarkdownResource && !QFileInfo(name.toLocalFile()).isFile())
      return missingTopic(folder_, name);
    return QTextBrowser::loadResource(type, name);
  }

 private:
  QString folder_;
};

}  // namespace

QString helpFile(const QString& folder, long topic) {
  if (folder.isEmpty()) return {};
  const QDir topics(folder);
  for (const QString& name : topics.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name))
    if (topicOf(name) == topic) return topics.filePath(name);
  return {};
}

HelpWindow::HelpWindow(QString folder) : folder_(std::move(folder)), browser_(new Browser(folder_, this)) {
  setObjectName(QStringLiteral("uiHelp"));
  setWindowTitle(QStringLiteral("Quorrel Help"));
  constexpr int width = 760, height = 640, margin = 18;
  resize(width, height);
  browser_->setOpenExternalLinks(true);
  browser_->document()->setDocumentMargin(margin);
  setCentralWidget(browser_);

  QToolBar* bar = addToolBar(QStringLiteral("Help"));
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  constexpr int pictureSize = 20;
  bar->setIconSize({pictureSize, pictureSize});
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  const auto add = [&](const QIcon& picture, const char* words, const QKeySequence& key) {
    QAction* action = bar->addAction(picture, QString::fromLatin1(words));
    action->setShortcut(key);
    return action;
  };
  QAction* back = add(style()->standardIcon(QStyle::SP_ArrowBack), "Back", QKeySequence::Back);
  QAction* forward = add(style()->standardIcon(QStyle::SP_ArrowForward), "Forward", QKeySequence::Forward);
  QAction* index = add(QIcon(QStringLiteral(":/icons/help.svg")), "Index", QKeySequence(Qt::ALT | Qt::Key_Home));
  auto* close = new QAction(this);
  close->setShortcut(Qt::Key_Escape);
  addAction(close);
  for (QAction* action : {back, forward}) action->setEnabled(false);
  connect(back, &QAction::triggered, browser_, &QTextBrowser::backward);
  connect(forward, &QAction::triggered, browser_, &QTextBrowser::forward);
  connect(index, &QAction::triggered, this, [this] { showTopic(indexTopic); });
  connect(close, &QAction::triggered, this, &QWidget::close);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
}

void HelpWindow::showTopic(long topic) {
  const QString file = helpFile(folder_, topic);
  browser_->setSource(
      QUrl::fromLocalFile(file.isEmpty() ? QDir(folder_).filePath(QStringLiteral("%1.md").arg(topic)) : file),
      QTextDocument::MarkdownResource);
  show();
  raise();
  activateWindow();
}

}  // namespace qrel
