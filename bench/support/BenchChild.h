#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// How a child draws: with Qt's software renderer without a display, or with OpenGL (llvmpipe) on a virtual X server.
enum class BenchRenderer { software, openGl };

/// Runs `ostrel-bench --child <arguments>` as a child process and returns the last number that the child prints; none
/// when the child failed or took longer than `seconds`.
std::optional<double> childMeasure(BenchRenderer renderer, const std::vector<std::string>& arguments,
                                   int seconds = 120);

/// The name of the display of a virtual X server, which the first call starts and which ends with this process. Empty
/// when Xvfb cannot be started.
std::string virtualDisplay();

// Each is one side of a benchmark, run in a child process: it measures, prints a number to standard output and returns
// the exit status.
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
