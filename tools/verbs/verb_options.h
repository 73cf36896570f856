/// Which options a verb has, and what they fill in.
#pragma once

namespace CLI {
class App;
}

namespace quorvex::tools {

struct InfoArguments;
struct FrameArguments;
struct RenderArguments;
struct ThumbnailArguments;
struct ConvertArguments;
struct CaptureArguments;
struct StateArguments;
struct PhantomArguments;

void AddOptions(CLI::App& verb, InfoArguments& arguments);
void AddOptions(CLI::App& verb, FrameArguments& arguments);
void AddOptions(CLI::App& verb, RenderArguments& arguments);
void AddOptions(CLI::App& verb, ThumbnailArguments& arguments);
void AddOptions(CLI::App& verb, ConvertArguments& arguments);
void AddOptions(CLI::App& verb, CaptureArguments& arguments);
void AddOptions(CLI::App& verb, StateArguments& arguments);
void AddOptions(CLI::App& verb, PhantomArguments& arguments);

}  // namespace quorvex::tools
