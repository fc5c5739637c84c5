// The studio: a window that shows and edits smoke live. Only this file prints errors and chooses the exit status.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "../tovu/plugin_location.h"
#include "commit.h"
#include "run_studio.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/shipped_files.h"

int main(int argc, char** argv) {
    CLI::App app("Makes smoke in a window: the same pictures as `tovu render`, live.", "tovu-studio");
    app.set_version_flag("--version", "tovu-studio " TOVU_VERSION " (" TOVU_COMMIT ")");
    tovu::StudioOptions options;
    options.smoke_plugin = tovu::smoke_plugin_file();
    options.scenes_folder = (stage::shipped_files_folder() / "scenes").string();
    options.looks_folder = stage::shipped_looks_folder().string();
    app.add_option("SCENE|LOOK", options.file, "scene or look file, or the name of a look; without it a gallery");
    app.add_flag("--fullscreen", options.fullscreen, "the picture alone, in full screen");
    app.add_option("--plugin", options.smoke_plugin, "library of the plug-in \"smoke\"");
    app.add_option("--scenes", options.scenes_folder, "folder of the scenes in the gallery");
    app.add_option("--looks", options.looks_folder, "folder of the looks in the gallery")->group("");
    app.add_option("--script", options.script, "file of events to play")->group("");
    CLI11_PARSE(app, argc, argv);
    const auto done = tovu::run_studio(options);
    if (done) return 0;
    std::fprintf(stderr, "tovu studio: %s\n", done.error().message.c_str());
    return 2;
}
