"""Writes a Fortran program that makes the calls of a case file (generic_tests LIB cases FILE) and compares the bits.

    fortran_calls.py interface.json > calls.f90
"""
import json
import sys

PROGRAM = """! Written from the description of the interface.
module calls
  use, intrinsic :: iso_c_binding
  use, intrinsic :: ieee_arithmetic, only: ieee_is_nan
  use sharedanalysis
  implicit none
  type :: argument
    logical :: is_written
    integer(c_int64_t) :: bytes
    integer(c_int8_t), allocatable :: data(:), wanted(:)
  end type argument
  interface point
    procedure point_float, point_double, point_int32_t, point_int64_t
  end interface point
contains
  logical function differs(got, wanted)
    integer(c_int8_t), intent(in) :: got(:), wanted(:)
    integer :: k
    real(c_double) :: a, b
    differs = .false.
    if (all(got == wanted)) return
    differs = mod(size(got), 8) /= 0
    do k = 1, size(got) - 7, 8
      a = transfer(got(k:k+7), a)
      b = transfer(wanted(k:k+7), b)
      if (any(got(k:k+7) /= wanted(k:k+7)) .and. .not. (ieee_is_nan(a) .and. ieee_is_nan(b))) differs = .true.
    end do
  end function differs

  logical function make(name, v, value)
    character(len=*), intent(in) :: name
    type(argument), intent(inout), target :: v(:)
    integer(c_int64_t), intent(inout) :: value
    make = .true.
    select case (name)
%s    case default
      make = .false.
    end select
  end function make

%send module calls

program replay
  use calls
  implicit none
  integer(c_int64_t) :: length, count, value, wanted, flag
  integer :: file, status, k, ncalls = 0, nwrong = 0
  character(len=256) :: path, last = "", one
  character(len=:), allocatable :: name
  type(argument), allocatable, target :: v(:)
  integer :: nroutines = 0
  call get_command_argument(1, path)
  open (newunit=file, file=trim(path), access="stream", form="unformatted", status="old", action="read")
  do
    read (file, iostat=status) length
    if (status /= 0) exit
    if (allocated(name)) deallocate (name)
    allocate (character(len=length) :: name)
    read (file) name, count, wanted
    if (allocated(v)) deallocate (v)
    allocate (v(count))
    do k = 1, int(count)
      read (file) flag, v(k)%%bytes
      v(k)%%is_written = flag /= 0
      allocate (v(k)%%data(max(8_c_int64_t, v(k)%%bytes)))
      v(k)%%data = 0
      if (v(k)%%bytes > 0) read (file) v(k)%%data(1:v(k)%%bytes)
      allocate (v(k)%%wanted(v(k)%%bytes))
      if (v(k)%%is_written) read (file) v(k)%%wanted
    end do
    if (name /= last) nroutines = nroutines + 1
    last = name
    ncalls = ncalls + 1
    value = wanted
    if (.not. make(name, v, value)) then
      print *, name, ": not called"
      nwrong = nwrong + 1
    end if
    if (value /= wanted) nwrong = nwrong + 1
    do k = 1, int(count)
      if (.not. v(k)%%is_written) cycle
      if (differs(v(k)%%data(1:v(k)%%bytes), v(k)%%wanted)) then
        write (one, "(i0)") k
        print *, name, ": argument ", trim(one), " differs"
        nwrong = nwrong + 1
      end if
    end do
  end do
  print "(i0, a, i0, a, i0, a)", nroutines, " routines, ", ncalls, " calls, ", nwrong, " wrong"
  if (nwrong > 0 .or. nroutines < 20) error stop 1
end program replay
"""

# An argument's bytes as an array of a type.
POINT = """  subroutine point_%s(v, a)
    type(argument), intent(inout), target :: v
    %s, pointer, contiguous, intent(out) :: a(:)
    call c_f_pointer(c_loc(v%%data), a, [max(1_c_int64_t, v%%bytes*8/storage_size(a))])
  end subroutine point_%s

"""

KINDS = {"float": "real(c_float)", "double": "real(c_double)", "int32_t": "integer(c_int32_t)", "int64_t": "integer(c_int64_t)"}


def routine(data):
    arguments = data["arguments"]
    lengths = {a["shape"][0] for a in arguments if a["unit"] == "text"}
    declared, points, actual, back = [], [], [], []
    for k, a in enumerate(arguments, 1):
        if a["unit"] == "text":
            declared.append(f"character(kind=c_char, len=int(v({k})%bytes)) :: a{k}")
            points.append(f"a{k} = transfer(v({k})%data(1:v({k})%bytes), a{k})")
            actual.append(f"a{k}")
            if a["direction"] != "in":
                back.append(f"v({k})%data(1:v({k})%bytes) = transfer(a{k}, v({k})%data)")
        elif a["name"] not in lengths:
            c_type = a["type"].replace("const ", "").rstrip("*")
            declared.append(f"{KINDS[c_type]}, pointer, contiguous :: a{k}(:)")
            points.append(f"call point(v({k}), a{k})")
            actual.append(f"a{k}(1)" if a["shape"] == ["1"] else f"a{k}")
    call, name = ", &\n      ".join(actual), data["name"]
    lines = [f"subroutine make_{name}(v, value)", "  type(argument), intent(inout), target :: v(:)",
             "  integer(c_int64_t), intent(inout) :: value"] + ["  " + line for line in declared]
    if data["result"] != "void":
        lines.append(f"  {KINDS[data['result']]} :: returned")
    lines += ["  " + line for line in points]
    if data["result"] == "void":
        lines += [f"  call {name}({call})", "  if (.false.) value = 0"]
    else:
        lines += [f"  returned = {name}({call})", "  value = transfer([returned, returned*0], value)"
                  if data["result"] == "int32_t" else "  value = transfer(returned, value)"]
    lines += ["  " + line for line in back] + [f"end subroutine make_{name}"]
    return "\n".join("  " + line for line in lines) + "\n\n"


def main():
    routines = json.load(open(sys.argv[1]))["routines"]
    kernels = [r for r in routines if {a["role"] for a in r["arguments"]} & {"block", "last", "length"}]
    cases = "".join(f'    case ("{r["name"]}")\n      call make_{r["name"]}(v, value)\n' for r in kernels)
    points = "".join(POINT % (name, kind, name) for name, kind in KINDS.items())
    sys.stdout.write(PROGRAM % (cases, points + "".join(map(routine, kernels))))


main()
