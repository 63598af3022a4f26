"""Signals, other processes and odd callbacks in the middle of a run."""

from __future__ import annotations

import gc
import os
import pathlib
import signal
import subprocess
import sys
import textwrap
import threading
import time
import weakref
from typing import Any, Callable, List, Optional

import pytest

import zelnor
from zelnor import Record

Plan = Callable[..., zelnor.PlannedJob]

PRESET = pathlib.Path(__file__).resolve().parents[2] / "Presets" / "mp3.json"
RUN = textwrap.dedent(
    """
    import sys, zelnor
    source, preset, output = sys.argv[1:]
    request = zelnor.JobRequest(output=output)
    graph = zelnor.plan(zelnor.probe(source), zelnor.Preset.open(preset), request).graph
    zelnor.run(graph, on_progress=lambda progress: print("begun", flush=True))
    """
)


@pytest.fixture
def handler(request: pytest.FixtureRequest) -> Any:
    """Sets the handler of a signal for the time of a test."""
    former = {}

    def set_handler(number: int, function: Any) -> None:
        former[number] = signal.signal(number, function)

    yield set_handler
    for number, function in former.items():
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(number, function)


@pytest.mark.parametrize("send", [os.kill, os.killpg])
def test_ctrl_c_ends_a_program_as_python_does(
    long_clip: pathlib.Path, tmp_path: pathlib.Path, start_python: Any, send: Callable[[int, int], None]
) -> None:
    program = start_python("-c", RUN, long_clip, PRESET, tmp_path / "out.mp3")
    assert program.stdout.readline() == "begun\n"
    send(program.pid, signal.SIGINT)  # to the group as well, as a terminal does
    _, said = program.communicate(timeout=60)
    assert program.returncode == -signal.SIGINT
    assert said.splitlines()[-1] == "KeyboardInterrupt"
    assert "TranscodeFailed" not in said
    assert os.listdir(tmp_path) == []


def test_a_program_that_is_killed_leaves_no_ffmpeg(
    long_clip: pathlib.Path, tmp_path: pathlib.Path, start_python: Any
) -> None:
    program = start_python("-c", RUN, long_clip, PRESET, tmp_path / "out.mp3")
    assert program.stdout.readline() == "begun\n"
    program.kill()
    program.communicate(timeout=60)
    for _ in range(1000):
        names = [name for name in os.listdir("/proc") if name.isdigit()]
        if not any(str(tmp_path) in command_line(name) for name in names):
            break
        time.sleep(0.05)
    else:
        pytest.fail("ffmpeg goes on")


def command_line(process: str) -> str:
    try:
        return pathlib.Path("/proc", process, "cmdline").read_bytes().decode(errors="replace")
    except OSError:
        return ""


def test_what_a_signal_handler_raises_stops_the_run(
    long_job: zelnor.Graph, tmp_path: pathlib.Path, handler: Any
) -> None:
    def time_out(*_: object) -> None:
        raise TimeoutError("too long")

    handler(signal.SIGALRM, time_out)
    with pytest.raises(TimeoutError, match="^too long$"):
        zelnor.run(long_job, on_progress=lambda _: signal.setitimer(signal.ITIMER_REAL, 0.05))
    assert os.listdir(tmp_path) == []


def test_a_run_goes_on_after_a_signal_handler_returned(plan_mp3: Plan, handler: Any) -> None:
    seen: List[int] = []
    handler(signal.SIGALRM, lambda number, _: seen.append(number))
    signal.setitimer(signal.ITIMER_REAL, 0.01, 0.01)
    assert zelnor.run(plan_mp3().graph).is_done
    assert set(seen) == {signal.SIGALRM}


def test_a_signal_handler_may_cancel(long_job: zelnor.Graph, handler: Any) -> None:
    token = zelnor.CancelToken()
    handler(signal.SIGALRM, lambda *_: token.cancel())
    progress = lambda _: signal.setitimer(signal.ITIMER_REAL, 0.05)
    assert not zelnor.run(long_job, cancel=token, on_progress=progress).is_done


def test_ctrl_c_is_for_the_main_thread_and_leaves_other_runs_alone(long_job: zelnor.Graph) -> None:
    token = zelnor.CancelToken()
    results: List[zelnor.RunResult] = []
    other = threading.Thread(target=lambda: results.append(zelnor.run(long_job, cancel=token)))
    other.start()
    timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
    with pytest.raises(KeyboardInterrupt):
        timer.start()
        time.sleep(60)
    time.sleep(0.2)
    assert results == []
    token.cancel()
    other.join()
    timer.join()
    assert not results[0].is_done


def test_of_a_cancelled_run_and_an_exception_the_exception_counts(long_job: zelnor.Graph) -> None:
    token = zelnor.CancelToken()

    def stop(_: zelnor.RunProgress) -> None:
        token.cancel()
        raise LookupError("mine")

    with pytest.raises(LookupError, match="^mine$"):
        zelnor.run(long_job, on_progress=stop, cancel=token)


def test_endless_recursion_in_a_callback_passes_through(long_job: zelnor.Graph) -> None:
    def recurse(progress: zelnor.RunProgress) -> None:
        recurse(progress)

    with pytest.raises(RecursionError):
        zelnor.run(long_job, on_progress=recurse)


def test_what_a_callback_raised_is_not_kept(long_job: zelnor.Graph) -> None:
    class Mine(Exception):
        pass

    watch: Optional["weakref.ref[Mine]"] = None

    def stop(_: zelnor.RunProgress) -> None:
        nonlocal watch
        error = Mine()
        watch = weakref.ref(error)
        try:
            raise error
        finally:
            del error

    try:
        zelnor.run(long_job, on_progress=stop)
    except Mine:
        pass
    gc.collect()
    assert watch is not None and watch() is None


def test_the_last_reference_to_a_graph_may_go_in_a_callback(plan_mp3: Plan) -> None:
    graphs = [plan_mp3().graph]

    def forget(_: zelnor.RunProgress) -> None:
        graphs.clear()
        gc.collect()

    assert zelnor.run(graphs[0], on_progress=forget).is_done
    assert graphs == []


def test_a_callback_may_start_processes(plan_mp3: Plan) -> None:
    codes: List[int] = []

    def fork(_: zelnor.TargetResult) -> None:
        child = os.fork()
        if child == 0:
            os._exit(7)
        codes.append(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))
        codes.append(subprocess.run(["true"]).returncode)

    assert zelnor.run(plan_mp3().graph, on_target_done=fork).is_done
    assert codes == [7, 0]


def test_a_job_runs_while_the_interpreter_ends(
    clip: pathlib.Path, tmp_path: pathlib.Path, run_python: Any
) -> None:
    program = "import atexit, sys\natexit.register(lambda: exec(compile(sys.argv.pop(), 'run', 'exec')))\n"
    done = run_python("-c", program, clip, PRESET, tmp_path / "out.mp3", RUN.replace("sys.argv[1:]", "sys.argv[1:4]"))
    assert (done.returncode, done.stderr) == (0, "")
    assert (tmp_path / "out.mp3").exists()


def test_objects_of_the_library_outlive_the_modules(run_python: Any) -> None:
    program = textwrap.dedent(
        """
        import sys, zelnor
        class Late:
            graph, token = zelnor.Graph(), zelnor.CancelToken()
            graph.add_node(zelnor.Record("x", {"a": [{"b": 1}, {"b": 2}]}))
            def __del__(self):
                self.token.cancel()
                len(self.graph)
        sys.late = Late()
        late = Late()
        late.itself = late
        """
    )
    done = run_python("-X", "dev", "-c", program)
    assert (done.returncode, done.stderr) == (0, "")


def test_runs_begin_and_end_in_many_threads_at_once(plan_mp3: Plan) -> None:
    graphs = [plan_mp3(f"{i}.mp3").graph for i in range(6)]
    tokens = [zelnor.CancelToken() for _ in graphs]
    ends: List[bool] = []

    def run(i: int) -> None:
        cancel = (lambda _: tokens[i].cancel()) if i % 2 else None
        ends.append(zelnor.run(graphs[i], cancel=tokens[i], on_progress=cancel).is_done or tokens[i].is_cancelled)

    threads = [threading.Thread(target=run, args=(i,)) for i in range(len(graphs))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert ends == [True] * len(graphs)


def test_threads_read_a_graph_that_is_checked(plan_mp3: Plan) -> None:
    graph = plan_mp3().graph
    wanted = graph.to_json()
    documents: List[str] = []
    refused: List[zelnor.ProfileException] = []
    kept: List[int] = []  # nodes whose removal was refused

    def read() -> None:
        for _ in range(50):
            documents.append(graph.to_json())

    def edit() -> None:
        for _ in range(50):
            try:
                kept.append(graph.add_node(Record("x")))
                graph.remove_node(kept[-1])
                kept.pop()
            except zelnor.ProfileException as error:
                refused.append(error)

    threads = [threading.Thread(target=read), threading.Thread(target=lambda: [zelnor.check(graph) for _ in range(5)])]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert documents == [wanted] * 50
    edits = threading.Thread(target=edit)
    edits.start()
    for _ in range(5):
        zelnor.check(graph)
    edits.join()
    assert all("cannot be changed" in str(error) for error in refused)
    assert len(graph) == 3 + len(kept)
