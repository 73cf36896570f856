/// Presentation states by the standard rules, for tests.
#pragma once

#include "tests/presentation/presentation_objects.h"

#include <memory>
#include <string>
#include <vector>

namespace quorvex::test {

/// A CT slice of 64 x 48 pixels, 1.2.3.4.
CDcmObject CtImage();

struct StateRecord : Record {
    StateRecord();
};

/// Null where none can be made.
std::unique_ptr<CDcmObject> MakeState(std::vector<CXGSPSInfo*> infos, CDcmObject image = CtImage());

/// No complaint of an independent checker about the state as it is.
void ExpectValid(const CDcmObject& state, const std::string& what);

/// Elements of an object, and of items in it, as text: "tag:depth=value;" each.
std::string ElementsOf(const CDcmObjectCommon& object);

/// A state with one of everything that fields of a record hold.
CDcmObject FullState();

}  // namespace quorvex::test
