#pragma once

class tnMessage;

/// The commands by which scripts and other modules drive the import. Attributes and answers stand
/// in docs/host-integration.md. Both do nothing while there is no module object.

/// Imports "urls", else "files", else what the user chooses, under "parentNodeId".
void importCAD(tnMessage &message);

/// Imports "files" again, below "parent".
void reloadCAD(tnMessage &message);
