#pragma once

#include "platform/tnPlatformExport.h"

#include <boost/any.hpp>

#include <map>
#include <string>

/// A message from the host, a script or another module: an id and named attributes of any type.
/// The receiver may write answers back into it.
class TNPLATFORM_EXPORT tnMessage {
public:
    /// Ids of the messages that every module receives.
    enum Id { None = 0, NewScene = 16 };

    explicit tnMessage(int id = None);

    int id() const { return m_id; }

    /// The attribute's value, an empty any when there is none. The reference is good until the
    /// attribute is set again.
    const boost::any &get(const std::string &key) const;

    /// Stores a value. With overwrite false a value that is already there stays.
    void set(const std::string &key, boost::any value, bool overwrite);

    /// All attributes, in the order of their keys.
    const std::map<std::string, boost::any> &attributes() const { return m_attributes; }

    /// Prints the call stack to the standard error stream, where the platform can tell it. For the
    /// search of senders of bad messages.
    static void printBT();

private:
    int m_id;
    std::map<std::string, boost::any> m_attributes;
};
