// The built-in console commands, in the order help lists them: one row per
// file under commands/, whose add<Name>(CommandTable &) adds the commands
// it declares. Included with VANTIX_COMMAND(Name) defined as what is wanted
// of each row.

VANTIX_COMMAND(Help)
VANTIX_COMMAND(Devices)
VANTIX_COMMAND(Show)
VANTIX_COMMAND(GetAndSet)
VANTIX_COMMAND(Call)
VANTIX_COMMAND(PlugAndUnplug)
VANTIX_COMMAND(FlightMode)
VANTIX_COMMAND(Sysinfo)
VANTIX_COMMAND(Version)
VANTIX_COMMAND(Key)
VANTIX_COMMAND(Wait)
VANTIX_COMMAND(Ramp)
VANTIX_COMMAND(Feed)
VANTIX_COMMAND(Expect)
VANTIX_COMMAND(Dump)
VANTIX_COMMAND(Record)
VANTIX_COMMAND(Snapshot)
VANTIX_COMMAND(Reset)
