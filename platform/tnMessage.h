#pragma once

#include "platform/tnPlatformExport.h"

#include <boost/any.hpp>

#include <string>
#include <utility>
#include <vector>

/// A message from the host, a script or another module: an id and named attributes of any type.
/// The receiver may write answers back into it.
class TNPLATFORM_EXPORT tnMessage {
public:
    /// Ids of the messages that every module receives.
    enum Id { None = 0, NewScene = 16 };

    explicit tnMessage(int id = None);

    int id() const { return m_id; }

    using Attribute = std::pair<std::string, boost::any>;

    /// The attribute's value, an empty any when there is none. The reference is good until an
    /// attribute is set. O(attributes): a message has a handful.
    const boost::any &get(const std::string &key) const;

    /// Stores a value. With overwrite false a value that is already there stays.
    void set(const std::string &key, boost::any value, bool overwrite);

    /// All attributes, in the order in which they were first set, so that a sender sees the answers
    /// behind what it has sent itself.
    const std::vector<Attribute> &attributes() const { return m_attributes; }

    /// Prints the call stack to the standard error stream, where the platform can tell it. For the
    /// search of senders of bad messages.
    static void printBT();

private:
    int m_id;
    std::vector<Attribute> m_attributes;
};
