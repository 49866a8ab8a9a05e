#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// How a child draws: Qt's software renderer without a display, or OpenGL (llvmpipe) under a virtual X server.
enum class BenchRenderer { software, openGl };

/// Runs `ostrel-bench --child <arguments>` in a process of its own and returns the number it prints last; none when it
/// failed or took longer than `seconds`.
std::optional<double> childMeasure(BenchRenderer renderer, const std::vector<std::string>& arguments,
                                   int seconds = 120);

/// A virtual X server for as long as it lives; started on first need. Empty when Xvfb cannot be started.
std::string virtualDisplay();

// What children do; the number is printed to standard output.
int runScrollChild(int argc, char** argv);
int runListViewChild(int argc, char** argv);
int runMillionChild(int argc, char** argv);
int runInsertChild(int argc, char** argv);
int runStartPeerChild(int argc, char** argv);
int runAnswersChild(int argc, char** argv);
int runThumbnailChild(int argc, char** argv);
int runVideoFirstChild(int argc, char** argv);
int runVideoPlayChild(int argc, char** argv);
int runDetailChild(int argc, char** argv);
int runSaveChild(int argc, char** argv);
int runUploadChild(int argc, char** argv);
int runEditorChild(int argc, char** argv);
int runTypingChild(int argc, char** argv);

}  // namespace ostrel
