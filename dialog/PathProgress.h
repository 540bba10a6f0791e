#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

class QLabel;

/// Shows in a label where a fast walk over the disk is. The label always holds a whole path; where
/// that is too long to be drawn, its middle is left out.
class PathProgress : public QObject {
    Q_OBJECT

public:
    /// The label becomes the parent and must not be null.
    explicit PathProgress(QLabel *label);

    /// Takes a path: shown at once after a pause, and else within a twentieth of a second, with the
    /// paths in between left out, since each new text costs a layout of the window.
    void show(const QString &path);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showNext();

    QLabel *m_label;
    QTimer m_pause;
    QString m_next; ///< null: the label is up to date
};
