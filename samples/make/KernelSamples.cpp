#include "Samples.h"

#include <APIHeaderSection_MakeHeader.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_Plane.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <IGESData_GlobalSection.hxx>
#include <IGESData_IGESModel.hxx>
#include <Interface_Static.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_ExternFile.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <StepData_StepModel.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_LayerTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XSControl_WorkSession.hxx>
#include <gp_Ax2.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <filesystem>
#include <stdexcept>

namespace tnsamples {

namespace {

struct Rgb {
    double r;
    double g;
    double b;
};

Quantity_Color color(const Rgb &rgb)
{
    return Quantity_Color(rgb.r, rgb.g, rgb.b, Quantity_TOC_sRGB);
}

TopLoc_Location moved(double x, double y, double z, double turnedDegrees = 0)
{
    gp_Trsf turn;
    turn.SetRotation(gp::OZ(), turnedDegrees * M_PI / 180);
    gp_Trsf shift;
    shift.SetTranslation(gp_Vec(x, y, z));
    return TopLoc_Location(shift * turn);
}

TopoDS_Shape box(double x, double y, double z, double dx, double dy, double dz)
{
    return BRepPrimAPI_MakeBox(gp_Pnt(x, y, z), dx, dy, dz).Shape();
}

TopoDS_Shape cylinder(const gp_Pnt &foot, const gp_Dir &axis, double radius, double height)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(foot, axis), radius, height).Shape();
}

/// A document with the few calls that the samples need.
class Model {
public:
    Model()
        : m_document(new TDocStd_Document("BinXCAF"))
    {
        XCAFDoc_DocumentTool::Set(m_document->Main());
        m_shapes = XCAFDoc_DocumentTool::ShapeTool(m_document->Main());
        m_colors = XCAFDoc_DocumentTool::ColorTool(m_document->Main());
    }

    TDF_Label part(const char *name, const TopoDS_Shape &shape, const Rgb &rgb)
    {
        const TDF_Label label = m_shapes->AddShape(shape, Standard_False);
        setName(label, name);
        m_colors->SetColor(label, color(rgb), XCAFDoc_ColorSurf);
        return label;
    }

    TDF_Label assembly(const char *name)
    {
        const TDF_Label label = m_shapes->NewShape();
        setName(label, name);
        return label;
    }

    void place(const TDF_Label &assembly, const char *name, const TDF_Label &part,
               const TopLoc_Location &location)
    {
        setName(m_shapes->AddComponent(assembly, part, location), name);
    }

    void colorFace(const TDF_Label &part, const TopoDS_Shape &face, const Rgb &rgb)
    {
        m_colors->SetColor(m_shapes->AddSubShape(part, face), color(rgb), XCAFDoc_ColorSurf);
    }

    void setLayer(const TDF_Label &part, const char *layer)
    {
        XCAFDoc_DocumentTool::LayerTool(m_document->Main())->SetLayer(part, layer);
    }

    void writeStep(const std::string &path)
    {
        m_shapes->UpdateAssemblies();
        STEPCAFControl_Writer writer;
        if (!writer.Transfer(m_document, STEPControl_AsIs))
            throw std::runtime_error("cannot transfer " + path);
        write(writer, path);
    }

    /// Writes the assembly to @p path and each part to a file of its own beside it.
    void writeStepFiles(const std::string &path)
    {
        m_shapes->UpdateAssemblies();
        STEPCAFControl_Writer writer;
        if (!writer.Transfer(m_document, STEPControl_AsIs, ""))
            throw std::runtime_error("cannot transfer " + path);
        write(writer, path);
    }

    void writeIges(const std::string &path)
    {
        IGESCAFControl_Writer writer;
        if (!writer.Transfer(m_document))
            throw std::runtime_error("cannot transfer " + path);
        IGESData_GlobalSection global = writer.Model()->GlobalSection();
        const auto text = [](const char *value) { return new TCollection_HAsciiString(value); };
        global.SetFileName(text(std::filesystem::path(path).filename().c_str()));
        global.SetAuthorName(text("tnmakesamples"));
        global.SetCompanyName(text(""));
        global.SetDate(text("20260101.000000"));
        global.SetLastChangeDate(text("20260101.000000"));
        writer.Model()->SetGlobalSection(global);
        if (!writer.Write(path.c_str()))
            throw std::runtime_error("cannot write " + path);
    }

private:
    static void setName(const TDF_Label &label, const char *name)
    {
        TDataStd_Name::Set(label, TCollection_ExtendedString(name, Standard_True));
    }

    /// Names no program, person or moment, so that the files stay the same.
    static void setHeader(const Handle(StepData_StepModel) & model, const std::string &name)
    {
        APIHeaderSection_MakeHeader header(model);
        const auto text = [](const char *value) { return new TCollection_HAsciiString(value); };
        header.SetName(text(name.c_str()));
        header.SetTimeStamp(text("2026-01-01T00:00:00"));
        header.SetAuthorValue(1, text(""));
        header.SetOrganizationValue(1, text(""));
        header.SetOriginatingSystem(text("tnmakesamples"));
        header.Apply(model);
    }

    static void write(STEPCAFControl_Writer &writer, const std::string &path)
    {
        const std::filesystem::path file(path);
        setHeader(writer.ChangeWriter().Model(), file.filename().string());
        using Files =
            NCollection_DataMap<TCollection_AsciiString, Handle(STEPCAFControl_ExternFile)>;
        for (Files::Iterator it(writer.ExternFiles()); it.More(); it.Next()) {
            const Handle(StepData_StepModel) model =
                Handle(StepData_StepModel)::DownCast(it.Value()->GetWS()->Model());
            setHeader(model, it.Value()->GetName()->ToCString());
        }
        // The names of the part files are taken from the directory the program runs in.
        const std::filesystem::path before = std::filesystem::current_path();
        std::filesystem::current_path(file.parent_path());
        const IFSelect_ReturnStatus status = writer.Write(file.filename().c_str());
        std::filesystem::current_path(before);
        if (status != IFSelect_RetDone)
            throw std::runtime_error("cannot write " + path);
    }

    Handle(TDocStd_Document) m_document;
    Handle(XCAFDoc_ShapeTool) m_shapes;
    Handle(XCAFDoc_ColorTool) m_colors;
};

constexpr Rgb blue{0.2, 0.4, 0.8};
constexpr Rgb orange{0.9, 0.5, 0.1};
constexpr Rgb steel{0.6, 0.6, 0.65};
constexpr Rgb green{0.2, 0.6, 0.3};

/// The topmost flat face.
TopoDS_Shape topFace(const TopoDS_Shape &shape)
{
    TopoDS_Shape top;
    double height = -1e9;
    for (TopExp_Explorer faces(shape, TopAbs_FACE); faces.More(); faces.Next()) {
        const Handle(Geom_Plane) plane =
            Handle(Geom_Plane)::DownCast(BRep_Tool::Surface(TopoDS::Face(faces.Current())));
        if (plane.IsNull() || std::fabs(plane->Axis().Direction().Z()) < 0.9)
            continue;
        if (plane->Location().Z() > height) {
            height = plane->Location().Z();
            top = faces.Current();
        }
    }
    return top;
}

void writeBracket(const std::string &path)
{
    TopoDS_Shape shape = BRepAlgoAPI_Fuse(box(0, 0, 0, 80, 60, 10), box(0, 50, 0, 80, 10, 60));
    for (const double x : {15.0, 65.0}) {
        shape = BRepAlgoAPI_Cut(shape, cylinder(gp_Pnt(x, 20, -1), gp::DZ(), 5, 20));
        shape = BRepAlgoAPI_Cut(shape, cylinder(gp_Pnt(x, 40, 40), gp::DY(), 5, 30));
    }
    Model model;
    const TDF_Label bracket = model.part("Bracket", shape, blue);
    model.colorFace(bracket, topFace(shape), orange);
    model.setLayer(bracket, "Sheet metal");
    model.writeStep(path);
}

void writeHousing(const std::string &path)
{
    TopoDS_Shape shape = BRepAlgoAPI_Cut(box(0, 0, 0, 100, 60, 40), box(5, 5, 5, 90, 50, 36));
    shape = BRepAlgoAPI_Cut(shape, cylinder(gp_Pnt(50, -1, 20), gp::DY(), 10, 8));
    Model model;
    model.part("Housing", shape, green);
    model.writeIges(path);
}

void writeGearbox(const std::string &path)
{
    Model model;
    const TDF_Label gearbox = model.assembly("Gearbox");
    const TDF_Label drive = model.assembly("Drive");
    const TDF_Label casing =
        model.part("Geh\xC3\xA4use",
                   BRepAlgoAPI_Cut(box(0, 0, 0, 120, 80, 50), box(5, 5, 5, 110, 70, 46)), steel);
    const TDF_Label shaft = model.part("Shaft", cylinder(gp::Origin(), gp::DZ(), 6, 60), orange);
    const TDF_Label wheel = model.part("Wheel",
                                       BRepAlgoAPI_Cut(cylinder(gp_Pnt(0, 0, 20), gp::DZ(), 20, 10),
                                                       cylinder(gp_Pnt(0, 0, 19), gp::DZ(), 6, 12)),
                                       blue);
    model.place(drive, "Shaft:1", shaft, moved(0, 0, 0));
    model.place(drive, "Wheel:1", wheel, moved(0, 0, 0));
    model.place(gearbox, "Casing:1", casing, moved(0, 0, 0));
    model.place(gearbox, "Drive:1", drive, moved(35, 40, 10));
    model.place(gearbox, "Drive:2", drive, moved(85, 40, 10, 45));
    model.setLayer(casing, "Outside");
    model.setLayer(shaft, "Inside");
    model.setLayer(wheel, "Inside");
    model.writeStep(path);
}

void writeRobot(const std::string &path)
{
    Model model;
    const TDF_Label robot = model.assembly("Robot");
    const TDF_Label base = model.part("base", cylinder(gp::Origin(), gp::DZ(), 40, 20), steel);
    const TDF_Label arm = model.part("arm", box(-10, -10, 0, 20, 20, 100), orange);
    const TDF_Label gripper = model.part(
        "gripper", BRepAlgoAPI_Cut(box(-15, -10, 0, 30, 20, 30), box(-8, -11, 10, 16, 22, 21)),
        blue);
    model.place(robot, "base:1", base, moved(0, 0, 0));
    model.place(robot, "arm:1", arm, moved(0, 0, 20));
    model.place(robot, "arm:2", arm, moved(0, 0, 120));
    model.place(robot, "gripper:1", gripper, moved(0, 0, 220));
    model.writeStepFiles(path);
}

} // namespace

void writeKernelSamples(const std::string &directory)
{
    STEPCAFControl_Writer init;
    Interface_Static::SetCVal("write.step.schema", "AP214IS");
    Interface_Static::SetIVal("write.surfacecurve.mode", 0);
    const std::string absolute = std::filesystem::absolute(directory).string();
    writeBracket(absolute + "/bracket.step");
    writeHousing(absolute + "/housing.iges");
    writeGearbox(absolute + "/gearbox.step");
    writeRobot(absolute + "/assembly/robot.step");
}

} // namespace tnsamples
