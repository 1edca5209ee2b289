// The window of the help: numbered topics, each a Markdown file whose name begins with its number ("230-support.md").
#pragma once

#include <QMainWindow>
#include <QString>

class QTextBrowser;

namespace qrel {

class HelpWindow : public QMainWindow {
 public:
  // `folder` holds the topics; empty: they aren't installed, which the window then says.
  explicit HelpWindow(QString folder);

  // Shows a topic and comes to the front. A topic without a file is told in its place.
  void showTopic(long topic);
  QTextBrowser& browser() { return *browser_; }

 private:
  QString folder_;
  QTextBrowser* browser_;  // the window's
};

// The file of a topic, empty when there is none; leading zeros of its name don't count.
QString helpFile(const QString& folder, long topic);

}  // namespace qrel
