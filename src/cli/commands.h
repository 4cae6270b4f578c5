// All commands. Each function adds one command to the syntax: its name, its arguments and the function that runs it.
//
// A command is defined in the file of its name or its family in commands/.
#pragma once

#include "cli/parser.h"

namespace zembrastel::cli {

void addProfileAdd(Syntax& parent);
void addProfileList(Syntax& parent);
void addProfileShow(Syntax& parent);
void addProfileSet(Syntax& parent);
void addProfileRemove(Syntax& parent);
void addProfileDuplicate(Syntax& parent);
void addProfileTrust(Syntax& parent);
void addProfileExport(Syntax& parent);
void addProfileImport(Syntax& parent);

void addTest(Syntax& parent);
void addLs(Syntax& parent);
void addScan(Syntax& parent);
void addWhy(Syntax& parent);
void addCheck(Syntax& parent);
void addWatch(Syntax& parent);
void addPush(Syntax& parent);
void addAdopt(Syntax& parent);
void addReview(Syntax& parent);
void addStatus(Syntax& parent);
void addPause(Syntax& parent);
void addResume(Syntax& parent);
void addForgetFiles(Syntax& parent);
void addBackups(Syntax& parent);
void addRestore(Syntax& parent);
void addDoctor(Syntax& parent);

} // namespace zembrastel::cli
