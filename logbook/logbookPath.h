#pragma once

#include <QtCore/QString>

/// Where the plug-in writes when the user chose nothing: the host's preference "FileIO tmp path",
/// as it stands there, or without one the system's directory for temporary files.
QString defaultOutputDirectory();

/// The logbook's file in the default output directory, whatever the user chose as output
/// directory. The extension begins with its dot.
QString logbookPath(const QString &extension);
