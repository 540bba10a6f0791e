#include "platform/tnMessage.h"

#include <algorithm>

#ifdef __GLIBC__
#include <execinfo.h>
#include <unistd.h>
#endif

namespace {

auto hasKey(const std::string &key)
{
    return [&key](const tnMessage::Attribute &attribute) { return attribute.first == key; };
}

} // namespace

tnMessage::tnMessage(int id)
    : m_id(id)
{
}

const boost::any &tnMessage::get(const std::string &key) const
{
    static const boost::any absent;
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(), hasKey(key));
    return found == m_attributes.end() ? absent : found->second;
}

void tnMessage::set(const std::string &key, boost::any value, bool overwrite)
{
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(), hasKey(key));
    if (found == m_attributes.end())
        m_attributes.emplace_back(key, std::move(value));
    else if (overwrite || found->second.empty())
        found->second = std::move(value);
}

void tnMessage::printBT()
{
#ifdef __GLIBC__
    void *frames[64];
    backtrace_symbols_fd(frames, backtrace(frames, 64), STDERR_FILENO);
#endif
}
