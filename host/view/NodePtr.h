#pragma once

#include <Inventor/misc/SoBase.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>

// Where argument-dependent lookup finds them.
inline void intrusive_ptr_add_ref(const SoBase *base)
{
    base->ref();
}

inline void intrusive_ptr_release(const SoBase *base)
{
    base->unref();
}

namespace tnhost {

/// Keeps a node of the scene graph, of class Node, alive.
template <typename Node>
using NodePtr = boost::intrusive_ptr<Node>;

} // namespace tnhost
