// What -u leaves out.
#pragma once

#include "batch/job.h"
#include "batch/naming.h"

namespace orbel {

// Takes the jobs whose results are up to date out of the plan, and settles them. A result is, when it is no older than
// its input and the mask, and tells that it was made with the settings of this run. One that tells no settings,
// somebody's own file for one, is judged by time alone. One that tells others is done again, unless it has been changed
// since it was made and may not be overwritten: then it holds work that is nowhere else.
void leaveOutWhatIsUpToDate(Plan& plan, const JobOptions& options);

}  // namespace orbel
