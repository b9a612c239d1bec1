"""Login records as glibc's <utmp.h> lays them out on x86-64."""

import struct

# ut_type, padding, ut_pid, ut_line, ut_id, ut_user, ut_host, ut_exit (two shorts), ut_session,
# ut_tv (seconds, microseconds; 32 bits each), ut_addr_v6, reserved.
LAYOUT = struct.Struct("<hxxi32s4s32s256shhiii16s20x")
assert LAYOUT.size == 384

RUN_LVL = 1


def utmp_record(type, time, line="~", id="~~", user="runlevel"):  # names as in <utmp.h>
    text = [value.encode() for value in (line, id, user)]
    return LAYOUT.pack(type, 0, *text, b"", 0, 0, 0, time, 0, b"")
