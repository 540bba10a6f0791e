#pragma once

class tnMessage;

/// The commands by which scripts and other modules drive the import; docs/host-integration.md tells
/// of their attributes and answers. Both do nothing until the module object has been made.

/// Imports "urls", else "files", else what the user chooses, under "parentNodeId".
void importCAD(tnMessage &message);

/// Imports "files" again, below "parent".
void reloadCAD(tnMessage &message);
