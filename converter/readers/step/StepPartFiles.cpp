#include "readers/step/StepPartFiles.h"

#include "core/Text.h"
#include "readers/kernel/KernelGuard.h"

#include <STEPConstruct_ExternRefs.hxx>
#include <StepAP214_AppliedExternalIdentificationAssignment.hxx>
#include <StepAP214_ExternalIdentificationItem.hxx>
#include <StepAP214_HArray1OfExternalIdentificationItem.hxx>
#include <StepBasic_DocumentFile.hxx>
#include <TCollection_HAsciiString.hxx>

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

namespace tnconvert {

namespace {

class Finder {
public:
    Finder(const std::string &path, const StepEntities &entities, const StepStructure &structure)
        : m_directory(std::filesystem::path(path).parent_path())
        , m_entities(entities)
        , m_products(structure.products())
    {
    }

    std::vector<StepPartFile> find()
    {
        // Without the formats of the documents the kernel follows a null.
        KernelGuard::run([this] { addFilesOfProducts(); });
        for (const auto &entity :
             m_entities.all<StepAP214_AppliedExternalIdentificationAssignment>())
            addLoose(*entity);
        return std::move(m_files);
    }

private:
    void addFilesOfProducts()
    {
        STEPConstruct_ExternRefs references(m_entities.session());
        references.LoadExternRefs();
        for (int i = 1; i <= references.NbExternRefs(); ++i) {
            const Standard_CString name = references.FileName(i);
            const auto product =
                std::find_if(m_products.begin(), m_products.end(), [&](const auto &one) {
                    return !one.entity.IsNull() && one.entity == references.ProdDef(i);
                });
            if (!name || !*name || product == m_products.end())
                continue;
            m_files.push_back({std::size_t(product - m_products.begin()), pathOf(name)});
            m_isTied.insert(references.DocFile(i).get());
        }
    }

    /// A file that is named and that no product is said to be in.
    void addLoose(const StepAP214_AppliedExternalIdentificationAssignment &entity)
    {
        if (entity.AssignedId().IsNull() || entity.Items().IsNull())
            return;
        for (const StepAP214_ExternalIdentificationItem &item : *entity.Items()) {
            const Handle(StepBasic_DocumentFile) document = item.DocumentFile();
            const StepPartFile file{{}, pathOf(entity.AssignedId()->ToCString())};
            if (!document.IsNull() && m_isTied.count(document.get()) == 0 && file.isStepFile())
                m_files.push_back(file);
        }
    }

    std::string pathOf(std::string name) const
    {
        std::replace(name.begin(), name.end(), '\\', '/');
        return absolutePath((m_directory / name).string());
    }

    const std::filesystem::path m_directory;
    const StepEntities &m_entities;
    const std::vector<StepProduct> &m_products;
    std::vector<StepPartFile> m_files;
    std::set<const Standard_Transient *> m_isTied; ///< documents
};

} // namespace

bool StepPartFile::isStepFile() const
{
    const std::string suffix = lowerCase(std::filesystem::path(file).extension().string());
    return suffix == ".stp" || suffix == ".step" || suffix == ".p21";
}

std::vector<StepPartFile> partFilesOf(const std::string &path, const StepEntities &entities,
                                      const StepStructure &structure)
{
    if (entities.all<StepBasic_DocumentFile>().empty())
        return {};
    return Finder(path, entities, structure).find();
}

} // namespace tnconvert
