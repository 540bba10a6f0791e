#include "logbook/tnXMLFormater.h"

namespace {

bool isPlain(char character)
{
    return character > ' ' && character < '\x7f';
}

/// As QString::trimmed, whose blanks are those of Unicode.
void appendTrimmed(std::string &text, const std::string &value)
{
    if (!value.empty() && isPlain(value.front()) && isPlain(value.back()))
        text.append(value);
    else
        text.append(QString::fromStdString(value).trimmed().toStdString());
}

void appendEntry(std::string &chapter, const std::pair<std::string, std::string> &entry)
{
    const auto &[time, message] = entry;
    if (message.empty())
        return;
    chapter.append("\t\t<ENTRY>\n");
    if (!time.empty()) {
        chapter.append("\t\t\t<TIME>\n");
        appendTrimmed(chapter, time);
        chapter.append("\t\t\t</TIME>\n");
    }
    chapter.append("\t\t\t<MESSAGE>\n");
    appendTrimmed(chapter, message);
    chapter.append("\t\t\t</MESSAGE>\n"
                   "\t\t</ENTRY>\n");
}

} // namespace

QString tnXMLFormater::format(const tnLogTable &table) const
{
    if (table.empty())
        return {};
    QString text = textWithRoom(table, 100);
    text += QLatin1String("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<LOGBOOK>\n");
    std::string chapter;
    for (auto entry = table.begin(); entry != table.end();) {
        const std::string &key = entry->first;
        chapter = "\t<CHAPTER>\n";
        if (!key.empty())
            chapter.append("\t\t<FILE>\n").append(key).append("\t\t</FILE>\n");
        do {
            appendEntry(chapter, entry->second);
            ++entry;
        } while (entry != table.end() && entry->first == key);
        chapter.append("\t</CHAPTER>\n");
        text += QString::fromStdString(chapter);
    }
    text += QLatin1String("</LOGBOOK>\n\n");
    return text;
}
