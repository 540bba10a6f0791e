// Makes mesh files of a gear-like ring with bumps, which shares its points as real parts do, and
// prints what each of some commands takes to convert them:
//
//     bench_meshes DIRECTORY TRIANGLES SUFFIXES COMMAND...
//
// SUFFIXES are those of the wanted files, as in stl,text.stl,obj,normals.obj,wrl. In a command {in}
// and {out} stand for the files, as in 'tnconvert {in} {out}.glb'. The first is ours: the others
// are compared with it. "own" is the most memory of the process that is not a view of a file,
// looked at every 2 ms.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int rounds = 3;

/// A closed ring of rows and columns of points, in millimetres.
class Ring {
public:
    explicit Ring(std::uint64_t triangles)
        : m_rows(std::max<std::uint64_t>(3, std::uint64_t(std::sqrt(double(triangles) / 2))))
        , m_columns(std::max<std::uint64_t>(3, triangles / 2 / m_rows))
    {
    }

    std::uint64_t pointCount() const { return m_rows * m_columns; }
    std::uint64_t triangleCount() const { return 2 * pointCount(); }

    std::array<float, 3> point(std::uint64_t index) const
    {
        const auto row = index / m_columns;
        const double along = 2 * M_PI * double(row) / double(m_rows);
        const double around = 2 * M_PI * double(index % m_columns) / double(m_columns);
        const double tooth = std::sin(24 * along) > 0 ? 1.5 : 0;
        const double radius = 12 + 0.2 * std::sin(90 * along) * std::cos(60 * around)
            + tooth * std::max(0.0, std::cos(around));
        const double reach = 50 + radius * std::cos(around);
        return {float(reach * std::cos(along)), float(reach * std::sin(along)),
                float(radius * std::sin(around))};
    }

    std::array<std::uint64_t, 3> triangle(std::uint64_t index) const
    {
        const std::uint64_t row = index / 2 / m_columns;
        const std::uint64_t column = index / 2 % m_columns;
        const std::uint64_t nextRow = (row + 1) % m_rows * m_columns;
        const std::uint64_t nextColumn = (column + 1) % m_columns;
        const std::uint64_t a = row * m_columns + column;
        const std::uint64_t c = nextRow + nextColumn;
        if (index % 2 == 0)
            return {a, nextRow + column, c};
        return {a, c, row * m_columns + nextColumn};
    }

private:
    std::uint64_t m_rows;
    std::uint64_t m_columns;
};

/// A file that is written in large pieces; the disk being full ends the program.
class Output {
public:
    explicit Output(const std::string &path)
        : m_file(std::fopen(path.c_str(), "wb"))
    {
        if (!m_file)
            fail();
    }
    ~Output()
    {
        if (std::fclose(m_file) != 0)
            fail();
    }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void bytes(const void *data, std::size_t size)
    {
        if (std::fwrite(data, 1, size, m_file) != size)
            fail();
    }
    template <typename... Values>
    void print(const char *format, Values... values)
    {
        if (std::fprintf(m_file, format, values...) < 0)
            fail();
    }

private:
    [[noreturn]] static void fail()
    {
        std::perror("bench_meshes");
        std::exit(1);
    }
    std::FILE *m_file;
};

void writeBinaryStl(const Ring &ring, Output &out)
{
    char header[84] = "bench_meshes";
    const auto count = std::uint32_t(ring.triangleCount());
    std::memcpy(header + 80, &count, sizeof count);
    out.bytes(header, sizeof header);
    for (std::uint64_t i = 0; i < ring.triangleCount(); ++i) {
        char facet[50] = {};
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const auto p = ring.point(ring.triangle(i)[corner]);
            std::memcpy(facet + 12 + corner * 12, p.data(), 12);
        }
        out.bytes(facet, sizeof facet);
    }
}

void writeTextStl(const Ring &ring, Output &out)
{
    out.print("solid ring\n");
    for (std::uint64_t i = 0; i < ring.triangleCount(); ++i) {
        out.print("facet normal 0 0 0\n outer loop\n");
        for (const std::uint64_t index : ring.triangle(i)) {
            const auto p = ring.point(index);
            out.print("  vertex %.7g %.7g %.7g\n", double(p[0]), double(p[1]), double(p[2]));
        }
        out.print(" endloop\nendfacet\n");
    }
    out.print("endsolid ring\n");
}

void writePoints(const Ring &ring, const char *format, Output &out)
{
    for (std::uint64_t i = 0; i < ring.pointCount(); ++i) {
        const auto p = ring.point(i);
        out.print(format, double(p[0]), double(p[1]), double(p[2]));
    }
}

void writeObj(const Ring &ring, Output &out)
{
    writePoints(ring, "v %.7g %.7g %.7g\n", out);
    for (std::uint64_t i = 0; i < ring.triangleCount(); ++i) {
        const auto [a, b, c] = ring.triangle(i);
        out.print("f %zu %zu %zu\n", a + 1, b + 1, c + 1);
    }
}

/// The normals are those of a ring without bumps: their cost is the same.
void writeObjWithNormals(const Ring &ring, Output &out)
{
    writePoints(ring, "v %.7g %.7g %.7g\n", out);
    for (std::uint64_t i = 0; i < ring.pointCount(); ++i) {
        const auto p = ring.point(i);
        const double scale = 1 - 50 / std::hypot(p[0], p[1]);
        const double length = std::hypot(p[0] * scale, p[1] * scale, p[2]);
        out.print("vn %.5f %.5f %.5f\n", p[0] * scale / length, p[1] * scale / length,
                  p[2] / length);
    }
    for (std::uint64_t i = 0; i < ring.triangleCount(); ++i) {
        const auto [a, b, c] = ring.triangle(i);
        out.print("f %zu//%zu %zu//%zu %zu//%zu\n", a + 1, a + 1, b + 1, b + 1, c + 1, c + 1);
    }
}

void writeVrml(const Ring &ring, Output &out)
{
    out.print("#VRML V2.0 utf8\nShape { geometry IndexedFaceSet { creaseAngle 0.5\n"
              "coord Coordinate { point [\n");
    writePoints(ring, "%.7g %.7g %.7g,\n", out);
    out.print("] }\ncoordIndex [\n");
    for (std::uint64_t i = 0; i < ring.triangleCount(); ++i) {
        const auto [a, b, c] = ring.triangle(i);
        out.print("%zu,%zu,%zu,-1,\n", a, b, c);
    }
    out.print("] } }\n");
}

constexpr struct {
    const char *name;
    const char *suffix;
    void (*write)(const Ring &, Output &);
} formats[] = {
    {"STL", "stl", writeBinaryStl}, {"STL, text", "text.stl", writeTextStl},
    {"Obj", "obj", writeObj},       {"Obj, normals", "normals.obj", writeObjWithNormals},
    {"VRML", "wrl", writeVrml},
};

struct Cost {
    bool isDone = false;
    double wall = 1e30;
    double processor = 1e30;
    double megabytes = 0; ///< all memory
    double ownMegabytes = 0;
};

double ownMegabytes(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, 8, "RssAnon:") == 0)
            return std::strtod(line.c_str() + 8, nullptr) / 1024;
    }
    return 0;
}

Cost run(const std::string &command)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0) {
        const std::string line = "exec " + command + " >/dev/null 2>&1";
        execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
        _exit(127);
    }
    Cost cost;
    int status = 0;
    rusage usage{};
    while (wait4(process, &status, WNOHANG, &usage) == 0) {
        cost.ownMegabytes = std::max(cost.ownMegabytes, ownMegabytes(process));
        usleep(2000);
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    const auto seconds = [](const timeval &t) {
        return double(t.tv_sec) + double(t.tv_usec) / 1e6;
    };
    cost.isDone = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    cost.wall = wall.count();
    cost.processor = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    cost.megabytes = double(usage.ru_maxrss) / 1024;
    return cost;
}

std::string filled(std::string command, const std::string &input, const std::string &output)
{
    for (const auto &[mark, path] : {std::pair("{in}", input), std::pair("{out}", output)}) {
        for (std::size_t at = 0; (at = command.find(mark)) != std::string::npos;)
            command.replace(at, std::strlen(mark), path);
    }
    return command;
}

/// The bytes of all outputs of one command; removes them.
double takeOutput(const std::filesystem::path &output)
{
    std::uintmax_t sum = 0;
    std::vector<std::filesystem::path> found;
    for (const auto &entry : std::filesystem::directory_iterator(output.parent_path())) {
        if (entry.path().filename().string().rfind(output.filename().string(), 0) == 0)
            found.push_back(entry.path());
    }
    for (const std::filesystem::path &path : found) {
        sum += std::filesystem::file_size(path);
        std::filesystem::remove(path);
    }
    return double(sum) / (1 << 20);
}

void compare(const std::string &name, const std::filesystem::path &input,
             const std::vector<std::string> &commands)
{
    const std::filesystem::path output = input.parent_path() / "bench_meshes.out";
    std::vector<Cost> least(commands.size());
    std::vector<double> sizes(commands.size());
    // In turn, so that what else the machine does meets all of them.
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            const Cost cost = run(filled(commands[i], input, output));
            least[i].isDone = cost.isDone;
            least[i].wall = std::min(least[i].wall, cost.wall);
            least[i].processor = std::min(least[i].processor, cost.processor);
            least[i].megabytes = std::max(least[i].megabytes, cost.megabytes);
            least[i].ownMegabytes = std::max(least[i].ownMegabytes, cost.ownMegabytes);
            sizes[i] = takeOutput(output);
        }
    }
    for (std::size_t i = 0; i < commands.size(); ++i) {
        std::printf("| %s | %s | %.2f | %.2f | %.2f | %.0f | %.0f | %.0f |%s\n", name.c_str(),
                    commands[i].substr(0, commands[i].find(' ')).c_str(), least[i].wall,
                    least[i].processor, least[0].wall / least[i].wall, least[i].megabytes,
                    least[i].ownMegabytes, sizes[i], least[i].isDone ? "" : " failed");
    }
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 5) {
        std::fprintf(stderr, "bench_meshes DIRECTORY TRIANGLES SUFFIXES COMMAND...\n");
        return 2;
    }
    const Ring ring(std::strtoull(argv[2], nullptr, 10));
    const std::vector<std::string> commands(argv + 4, argv + argc);
    std::printf("%llu triangles; the best of %d rounds\n\n"
                "| Format | Command | s | s of processor | ours to it | MB | own MB | output MB |\n"
                "|---|---|---|---|---|---|---|---|\n",
                static_cast<unsigned long long>(ring.triangleCount()), rounds);
    const std::string wanted = "," + std::string(argv[3]) + ",";
    for (const auto &format : formats) {
        if (wanted.find("," + std::string(format.suffix) + ",") == std::string::npos)
            continue;
        const std::filesystem::path input = std::filesystem::path(argv[1])
            / ("ring" + std::to_string(ring.triangleCount()) + "." + format.suffix);
        if (!std::filesystem::exists(input)) {
            Output out(input.string());
            format.write(ring, out);
        }
        compare(format.name, input, commands);
    }
    return 0;
}
