#ifndef VANTIXCONTROL_ENGINE_P_H
#define VANTIXCONTROL_ENGINE_P_H

#include "commandtable_p.h"
#include "engine.h"
#include "snapshotstore_p.h"

#include <vantix/vantix_private_export.h>

namespace VantixControl {

class VANTIX_PRIVATE_EXPORT EnginePrivate
{
public:
    static EnginePrivate *get(Engine *engine) { return engine ? engine->d : nullptr; }

    /// The built-in commands, then what the host added, in the order help lists them.
    CommandTable table;
    /// The snapshots any client of this System may restore, and the state after apiReady.
    SnapshotStore snapshots;
};

} // namespace VantixControl

#endif
