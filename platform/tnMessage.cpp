#include "platform/tnMessage.h"

#ifdef __GLIBC__
#include <execinfo.h>
#include <unistd.h>
#endif

tnMessage::tnMessage(int id)
    : m_id(id)
{
}

const boost::any &tnMessage::get(const std::string &key) const
{
    static const boost::any absent;
    const auto found = m_attributes.find(key);
    return found == m_attributes.end() ? absent : found->second;
}

void tnMessage::set(const std::string &key, boost::any value, bool overwrite)
{
    boost::any &slot = m_attributes[key];
    if (overwrite || slot.empty())
        slot = std::move(value);
}

void tnMessage::printBT()
{
#ifdef __GLIBC__
    void *frames[64];
    backtrace_symbols_fd(frames, backtrace(frames, 64), STDERR_FILENO);
#endif
}
