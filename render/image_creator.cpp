// CXImageCreator: its life, and the jobs that it runs.
#include "foundation/types/answer.h"
#include "quorvex/CXImageCreator.h"
#include "render/job_rules.h"
#include "render/render_run.h"

namespace quorvex {

CXImageCreator::CXImageCreator() = default;
CXImageCreator::CXImageCreator(const CXImageCreator&) noexcept = default;
CXImageCreator& CXImageCreator::operator=(const CXImageCreator&) noexcept = default;
CXImageCreator::~CXImageCreator() = default;

int CXImageCreator::GetImageWithInfo(_IMAGE_INFO& info) {
    return Answer(kJobWithoutTable, [&] {
        ScratchMemory scratch;
        return RenderRun(info, scratch).Run();
    });
}

}  // namespace quorvex
