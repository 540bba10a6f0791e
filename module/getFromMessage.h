#pragma once

#include "platform/tnMessage.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <typeinfo>

/// Reads an attribute of exactly the type T into value. Gives false and leaves value alone when the
/// attribute is absent or of another type; nothing is converted. A wrong type is a fault of the
/// sender, so it is reported on the standard error stream together with the call stack.
template <typename T>
bool getFromMessage(const tnMessage &message, const std::string &key, T &value)
{
    const boost::any &attribute = message.get(key);
    if (attribute.empty())
        return false;

    // By name and not by identity: a sender in another library may have its own type information.
    const char *held = attribute.type().name();
    const char *required = typeid(T).name();
    if (std::strcmp(held, required) != 0) {
        std::fprintf(stderr,
                     "getFromMessage : Attribute '%s' has wrong type (is:'%s' != req:'%s')!\n",
                     key.c_str(), held, required);
        tnMessage::printBT();
        return false;
    }
    value = *boost::unsafe_any_cast<T>(&attribute);
    return true;
}
