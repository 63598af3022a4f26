"""Zelnor Conf: the vocabulary of media, records, and transcoding jobs from planning to verified files.

    import zelnor

    source = zelnor.probe("in.mov")
    preset = zelnor.Preset.open(zelnor.find_preset("mp4-h264-aac"))
    job = zelnor.plan(source, preset, zelnor.JobRequest(output="out.mp4"))
    for fault in zelnor.check(job.graph):
        print(fault)
    zelnor.run(job.graph, on_progress=lambda progress: print(progress.part))
"""

# The values and the exceptions stand first: the extension looks for them.
from . import _exceptions, _record, _values, _zelnor  # isort: skip

_zelnor._require_main_interpreter()

from . import _vocabulary
from ._exceptions import *
from ._record import *
from ._values import *
from ._vocabulary import *
from ._zelnor import *
