#pragma once

#include "core/Report.h"
#include "core/Settings.h"
#include "readers/kernel/Kernel.h"

#include <XSControl_WorkSession.hxx>

#include <memory>
#include <optional>
#include <string>

namespace tnconvert {

/// Has the kernel read an Iges file and make shapes of it. Where it crashes over the whole, its
/// roots (the entities that belong to no other) are tried one by one in a child process, and those
/// that crash it are left out.
class IgesTransfer {
public:
    /// Throws ConversionError when nothing can be made of @p path. Progress is reported between 40
    /// and 60 percent.
    IgesTransfer(const std::string &path, const Settings &settings, Report &report);

    ~IgesTransfer();
    IgesTransfer(const IgesTransfer &) = delete;
    IgesTransfer &operator=(const IgesTransfer &) = delete;

    const Handle(TDocStd_Document) & document() { return m_document->handle(); }
    Handle(XSControl_WorkSession) session() const;

private:
    class Reader;

    void open();
    bool transfer();
    void leaveBadRootsOut();

    const std::string m_path;
    const Settings &m_settings;
    Report &m_report;
    bool m_withNames = true;
    std::unique_ptr<Reader> m_reader;
    std::optional<KernelDocument> m_document;
};

} // namespace tnconvert
