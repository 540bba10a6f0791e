#pragma once

#include <QtCore/QtGlobal>

/// Marks what the platform library shares with host and plug-ins.
#ifdef TNPLATFORM_BUILD
#define TNPLATFORM_EXPORT Q_DECL_EXPORT
#else
#define TNPLATFORM_EXPORT Q_DECL_IMPORT
#endif
