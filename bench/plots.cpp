#include "plots.h"

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

// In the order of the columns that plots.gp reads.
const char* const kSubjects[] = {"frame/smoke",      "step/smoke_turbulent", "step/smoke",
                                 "collect/and_sort", "arrays_facing/smoke",  "arrays_flat/smoke",
                                 "ogre/update",      "osg/update",           "irrlicht/update"};

struct Crowd {
    int32_t instances;
    const char* case_name;
};
const Crowd kCrowds[] = {{1, "frame/1_smoke_of_25000"},
                         {5, "frame/5_smokes_of_5000"},
                         {25, "frame/25_smokes_of_1000"},
                         {250, "frame/250_smokes_of_100"}};

std::string column(const Figures& figures, const std::string& name, double unit) {
    const auto found = figures.find(name);
    return found == figures.end() ? " nan" : fmt::format(" {:.3f}", minimum(found->second) / unit);
}

std::string by_particles(const Figures& figures) {
    std::string text = "particles";
    for (const char* subject : kSubjects) text += std::string(" ") + subject;
    for (const int32_t count : kCounts) {
        text += "\n" + std::to_string(count);
        for (const char* subject : kSubjects) text += column(figures, case_name(subject, count), 1e-9);
    }
    return text + "\n";
}

std::string by_instances(const Figures& figures) {
    std::string text = "instances frame\n";
    for (const Crowd& crowd : kCrowds)
        text += std::to_string(crowd.instances) + column(figures, crowd.case_name, 1e-3) + "\n";
    return text;
}

void write(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    file.flush();
    if (!file) throw std::runtime_error("cannot write '" + path + "'");
}

}  // namespace

void write_plot_data(const Figures& figures, const std::string& folder) {
    write(folder + "/particles.dat", by_particles(figures));
    write(folder + "/instances.dat", by_instances(figures));
}

}  // namespace bench
