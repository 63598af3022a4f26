"""Running jobs and verifying what they made."""

from __future__ import annotations

import os
import pathlib
import signal
import textwrap
import threading
import time
from typing import Any, Callable, List

import pytest

import zelnor
from zelnor import JobRequest, Record

Plan = Callable[..., zelnor.PlannedJob]


def test_a_job_is_run_and_verified(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    graph = plan_mp3().graph
    seen: List[zelnor.RunProgress] = []
    losses: List[zelnor.JobFault] = []
    done: List[zelnor.TargetResult] = []
    result = zelnor.run(graph, on_progress=seen.append, on_loss=losses.append, on_target_done=done.append)
    assert result.is_done
    assert result.targets == tuple(done)
    assert done[0].file == str(tmp_path / "out.mp3")
    assert done[0].size == (tmp_path / "out.mp3").stat().st_size
    assert seen[0].target_count == 1
    assert losses
    [verified] = zelnor.verify(graph, depth=zelnor.VerificationDepth.FULL)
    assert verified.differences == ()
    assert zelnor.probe(tmp_path / "out.mp3").streams[0].codec == "mp3"


def test_callbacks_are_called_in_the_thread_that_runs_the_job(plan_mp3: Plan) -> None:
    threads = set()
    zelnor.run(plan_mp3().graph, on_progress=lambda _: threads.add(threading.get_ident()))
    assert threads == {threading.get_ident()}


def test_a_target_that_is_there_is_not_replaced_unasked(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    (tmp_path / "out.mp3").write_text("mine")
    graph = plan_mp3().graph
    with pytest.raises(zelnor.JobException) as caught:
        zelnor.run(graph, document="job.json")
    assert caught.value.node == 2
    assert caught.value.file == "job.json"
    assert (tmp_path / "out.mp3").read_text() == "mine"
    assert zelnor.run(graph, overwrite=True).is_done


@pytest.mark.parametrize("kind", [pathlib.Path, str, os.fsencode])
def test_ffmpeg_writes_in_a_scratch_folder(plan_mp3: Plan, tmp_path: pathlib.Path, kind: Any) -> None:
    scratch = tmp_path / "scratch"
    scratch.mkdir()
    seen: List[str] = []
    result = zelnor.run(
        plan_mp3().graph,
        scratch=kind(scratch),
        on_progress=lambda _: seen.extend(os.listdir(scratch) + os.listdir(tmp_path)),
    )
    assert result.is_done
    assert any(name.startswith(".zelnor-") for name in seen)
    assert "out.mp3" not in seen
    assert os.listdir(scratch) == []
    assert sorted(os.listdir(tmp_path)) == ["out.mp3", "scratch"]


def test_a_scratch_folder_that_is_not_there_is_told(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    with pytest.raises(zelnor.MediaException, match="Cannot write in the scratch folder 'none': No such file"):
        zelnor.run(plan_mp3().graph, scratch="none")
    assert os.listdir(tmp_path) == []


def test_a_cancelled_run_leaves_nothing_in_the_scratch_folder(
    long_job: zelnor.Graph, tmp_path: pathlib.Path
) -> None:
    (tmp_path / "scratch").mkdir()
    token = zelnor.CancelToken()
    assert not zelnor.run(
        long_job, scratch=tmp_path / "scratch", cancel=token, on_progress=lambda _: token.cancel()
    ).is_done
    assert os.listdir(tmp_path) == ["scratch"]
    assert os.listdir(tmp_path / "scratch") == []


@pytest.mark.parametrize("scratch", ["", b"", 1, "a\0b"])
def test_a_scratch_folder_has_a_name(plan_mp3: Plan, tmp_path: pathlib.Path, scratch: Any) -> None:
    with pytest.raises((TypeError, ValueError, zelnor.MediaException)):
        zelnor.run(plan_mp3().graph, scratch=scratch)
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("flag", [None, 1, "no", 0])
def test_a_flag_is_true_or_false(plan_mp3: Plan, flag: Any) -> None:
    with pytest.raises(TypeError):
        zelnor.run(plan_mp3().graph, overwrite=flag)


@pytest.mark.parametrize("callback", [1, "print", ()])
def test_a_callback_is_a_function(plan_mp3: Plan, tmp_path: pathlib.Path, callback: Any) -> None:
    with pytest.raises(TypeError, match="^a callback is a function or None$"):
        zelnor.run(plan_mp3().graph, on_progress=callback)
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("depth", [1, "quick", None])
def test_a_depth_is_one_of_its_enumeration(plan_mp3: Plan, depth: Any) -> None:
    with pytest.raises(TypeError, match="^the depth is a VerificationDepth$"):
        zelnor.run(plan_mp3().graph, verification=depth)


def test_what_a_callback_raises_stops_the_run_and_passes_through(
    long_job: zelnor.Graph, tmp_path: pathlib.Path
) -> None:
    class Enough(Exception):
        pass

    def stop(_: zelnor.RunProgress) -> None:
        raise Enough("of it") from KeyError("why")

    with pytest.raises(Enough, match="^of it$") as caught:
        zelnor.run(long_job, on_progress=stop)
    assert isinstance(caught.value.__cause__, KeyError)
    assert os.listdir(tmp_path) == []


def test_nothing_is_called_after_a_callback_raised(long_job: zelnor.Graph) -> None:
    calls = []

    def stop(progress: zelnor.RunProgress) -> None:
        calls.append(progress)
        raise SystemExit(3)

    with pytest.raises(SystemExit):
        zelnor.run(long_job, on_progress=stop)
    assert len(calls) == 1


def test_a_token_cancels_from_a_callback(long_job: zelnor.Graph, tmp_path: pathlib.Path) -> None:
    token = zelnor.CancelToken()
    result = zelnor.run(long_job, cancel=token, on_progress=lambda _: token.cancel())
    assert token.is_cancelled
    assert not result.is_done
    assert os.listdir(tmp_path) == []


def test_a_token_cancels_from_another_thread(long_job: zelnor.Graph) -> None:
    token = zelnor.CancelToken()
    begun = threading.Event()
    other = threading.Thread(target=lambda: (begun.wait(), token.cancel()))
    other.start()
    assert not zelnor.run(long_job, cancel=token, on_progress=lambda _: begun.set()).is_done
    other.join()


def test_ctrl_c_cancels_a_run(long_job: zelnor.Graph, tmp_path: pathlib.Path) -> None:
    token = zelnor.CancelToken()
    begun = threading.Event()
    other = threading.Thread(target=lambda: (begun.wait(), os.kill(os.getpid(), signal.SIGINT)))
    other.start()
    with pytest.raises(KeyboardInterrupt):
        zelnor.run(long_job, cancel=token, on_progress=lambda _: begun.set())
    assert token.is_cancelled
    assert os.listdir(tmp_path) == []
    other.join()


def test_other_threads_go_on_while_a_job_runs(long_job: zelnor.Graph) -> None:
    token = zelnor.CancelToken()
    counted = 0

    def count() -> None:
        nonlocal counted
        while counted < 50:
            counted += 1
            time.sleep(0.001)
        token.cancel()

    counter = threading.Thread(target=count)
    counter.start()
    # Were the thread held up, nobody would cancel the job before it is done.
    assert not zelnor.run(long_job, cancel=token).is_done
    counter.join()
    assert counted == 50


def test_a_graph_that_is_running_refuses_edits_and_answers_questions(long_job: zelnor.Graph) -> None:
    errors: List[Exception] = []
    sizes: List[int] = []

    def edit(_: zelnor.RunProgress) -> None:
        try:
            long_job.add_node(Record("x"))
        except zelnor.ProfileException as error:
            errors.append(error)
        sizes.append(len(long_job))
        token.cancel()

    token = zelnor.CancelToken()
    zelnor.run(long_job, on_progress=edit, cancel=token)
    assert str(errors[0]).startswith("The graph cannot be changed while ")
    assert sizes == [3]
    assert long_job.add_node(Record("x")) == 4


def test_two_jobs_run_at_once(plan_mp3: Plan) -> None:
    graphs = [plan_mp3(f"{i}.mp3").graph for i in range(2)]
    results: List[bool] = []
    threads = [threading.Thread(target=lambda g=g: results.append(zelnor.run(g).is_done)) for g in graphs]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [True, True]


def test_a_job_may_be_run_inside_a_callback(plan_mp3: Plan) -> None:
    inner = plan_mp3("inner.mp3").graph
    results: List[zelnor.RunResult] = []

    def run(_: zelnor.TargetResult) -> None:
        results.append(zelnor.run(inner))

    assert zelnor.run(plan_mp3("outer.mp3").graph, on_target_done=run).is_done
    assert results[0].is_done


def test_a_run_that_ffmpeg_fails_tells_its_exit_code(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    script = tmp_path / "failing"
    script.write_text("#!/bin/sh\necho 'no luck' >&2\nexit 7\n")
    script.chmod(0o755)
    with pytest.raises(zelnor.TranscodeFailed) as caught:
        zelnor.run(plan_mp3().graph, ffmpeg=script)
    assert caught.value.exit_code == 7
    assert caught.value.messages is not None and "no luck" in caught.value.messages[-1]
    assert caught.value.file == str(tmp_path / "out.mp3")


def test_an_ffmpeg_that_is_not_there_is_refused(plan_mp3: Plan) -> None:
    with pytest.raises(zelnor.RunException):
        zelnor.run(plan_mp3().graph, ffmpeg="/nonexistent/ffmpeg")


def test_a_file_that_is_not_what_the_job_says_differs(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    graph = plan_mp3().graph
    assert zelnor.run(graph).is_done
    other = zelnor.Graph.from_json(graph.to_json().replace("44100", "22050"))
    [verified] = zelnor.verify(other)
    difference = verified.differences[0]
    assert str(difference) == difference.sentence
    assert "22050" in difference.wanted and "44100" in difference.found
    assert difference.place.link == (3, 2)


def test_verification_measures_quality(media: zelnor.MediaFile, tmp_path: pathlib.Path, mp4: zelnor.Preset) -> None:
    graph = zelnor.plan(media, mp4, JobRequest(tmp_path / "out.mp4")).graph
    assert zelnor.run(graph).is_done
    [verified] = zelnor.verify(graph, quality=True)
    assert 0.5 < verified.quality[0].ssim <= 1
    assert verified.quality[0].place.link is not None


def test_verification_tells_how_far_it_is(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    graph = plan_mp3().graph
    assert zelnor.run(graph).is_done
    seen: List[zelnor.RunProgress] = []
    zelnor.verify(graph, depth=zelnor.VerificationDepth.FULL, on_progress=seen.append)
    assert seen[0].is_verifying
    assert seen[0].file == str(tmp_path / "out.mp3")


def test_verify_passes_through_what_its_callback_raises(plan_mp3: Plan) -> None:
    graph = plan_mp3().graph
    assert zelnor.run(graph).is_done

    def stop(_: zelnor.RunProgress) -> None:
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        zelnor.verify(graph, depth=zelnor.VerificationDepth.FULL, on_progress=stop)


def test_a_thread_that_is_left_running_does_not_crash_the_end(
    long_clip: pathlib.Path, tmp_path: pathlib.Path, run_python: Any
) -> None:
    program = textwrap.dedent(
        """
        import sys, threading, time, zelnor
        source, preset, output = sys.argv[1:]
        request = zelnor.JobRequest(output=output)
        graph = zelnor.plan(zelnor.probe(source), zelnor.Preset.open(preset), request).graph
        begun = threading.Event()
        run = lambda: zelnor.run(graph, on_progress=lambda progress: begun.set())
        threading.Thread(target=run, daemon=True).start()
        begun.wait()
        """
    )
    preset = pathlib.Path(__file__).resolve().parents[2] / "Presets" / "mp3.json"
    done = run_python("-c", program, long_clip, preset, tmp_path / "out.mp3")
    assert (done.returncode, done.stderr) == (0, "")
