#pragma once

#include <QtWidgets/QFileDialog>

/// The modal chooser of the files to import, one or several existing ones. It opens in the
/// directory of the last choice.
class tnFileImportDialog : public QFileDialog {
    Q_OBJECT

public:
    tnFileImportDialog();

    /// What was chosen, once exec() gave QDialog::Accepted. The directory of the first file is
    /// where the next chooser opens.
    QStringList selectedImportFiles() const;
    /// Keeps the directory for the next chooser; an empty one changes nothing.
    void storeLastDirectory(const QString &directory) const;
};
