#pragma once

#include <QtWidgets/QWidget>

class QLabel;

namespace tnhost {

class ImportCommands;

/// Where the search for files is, with a button to end it; hidden while there is none.
class SearchStatus : public QWidget {
    Q_OBJECT

public:
    /// The commands must outlive it.
    explicit SearchStatus(ImportCommands &commands, QWidget *parent = nullptr);

private:
    void showFolder(const QString &folder);

    QLabel *m_text;
};

} // namespace tnhost
