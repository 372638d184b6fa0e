! Texts between Fortran and the library: lengths and zeros that the module adds.  The program receives the lines itself.
module received
  use, intrinsic :: iso_c_binding
  implicit none
  character(len=80) :: lines(20) = ""
  integer :: n = 0
contains
  subroutine keep(line)
    character(kind=c_char), intent(in) :: line(:)
    integer :: k
    n = n + 1
    do k = 1, min(80, size(line))
      lines(n)(k:k) = line(k)
    end do
    if (lines(n) == "") n = n - 1
  end subroutine keep

  subroutine line_of_fixed_texts(line, unit, width, thread, message, length) bind(c, name="LFC_XUT_XPLMSGC")
    integer(c_int64_t), value :: length
    character(kind=c_char), intent(in) :: line(length)
    integer(c_int32_t), intent(in) :: unit, width, thread, message
    if (unit == -6 .and. width == 79 .and. thread >= 0 .and. message >= 0) call keep(line)
  end subroutine line_of_fixed_texts

  subroutine line_of_terminated_texts(line, unit, width, thread, message, length) bind(c, name="lfc_xut_xplmsgC_c")
    integer(c_int64_t), value :: length
    integer(c_int32_t), value :: unit, width, thread, message
    character(kind=c_char), intent(in) :: line(length)
    if (unit == -6 .and. width == 79 .and. thread >= 0 .and. message >= 0) call keep(line)
  end subroutine line_of_terminated_texts
end module received

program fortran_texts
  use received
  use sharedanalysis
  implicit none
  integer(c_int32_t) :: components = 0
  character(len=12) :: keyword, filled = "............"
  character(len=5) :: names(2) = ["ab   ", "cdefg"]
  integer(c_int32_t) :: none(1) = 0
  real(c_double) :: nothing(1) = 0

  call Shared_Analysis_XP_initialize(components)
  call GLO_UTI_WRITE(GLO_UNIT_MESSAGE_FILE, 0_c_int32_t, "Status", "fixed texts", none, nothing, names)
  call GLO_UTI_WRITE(GLO_UNIT_MESSAGE_FILE, 0_c_int32_t, "Table", "%S and %S, %I", [7_c_int32_t], nothing, names)
  call glo_uti_CWrite(GLO_UNIT_MESSAGE_FILE, 0_c_int32_t, "Table   ", "%S or %S, %R   ", none, [2.5_c_double], names)
  call GLO_GETPROCEDURETYPE(17_c_int32_t, keyword)
  call GLO_UTI_BROADCASTC(4_c_int32_t, "x", filled(3:6))
  call Shared_Analysis_XP_finalize(components)

  call expect(lines(1), "fixed texts")
  call expect(lines(2), "ab and cdefg, 7")
  call expect(lines(3), "ab or cdefg, 2.50000e+00")
  call expect(keyword, "*DYNAMIC, EX")
  call expect(filled, "..xxxx......")
contains
  subroutine expect(got, wanted)
    character(len=*), intent(in) :: got, wanted
    if (got == wanted) return
    print "(4a)", "got ", got, ", not ", wanted
    error stop 1
  end subroutine expect
end program fortran_texts
