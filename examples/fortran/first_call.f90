! The shortest host in Fortran: the stresses of one block of rubber, and a message.  The program receives the lines of messages
! itself; the reference host does the rest.
!
!   gfortran first_call.f90 $(pkg-config --cflags --libs sharedanalysis-fortran sharedanalysis-host)
program first_call
  use, intrinsic :: iso_c_binding
  use sharedanalysis
  implicit none
  integer(c_int32_t), parameter :: n = 100
  integer(c_int32_t) :: components = 0, i
  real(c_double), dimension(n) :: c10 = 0.5e6_c_double, zero = 0, rd1 = 25e6_c_double, flag = 0, bound, bulk
  real(c_double) :: v(n, 6) = 0, stress(n, 6)

  call Shared_Analysis_XP_initialize(components)
  v(:, 1:3) = 1 ! left stretch: 11 22 33 12 23 13
  v(:, 1) = [(1 + 0.01_c_double*(i - 1), i=1, n)]
  call SPX_MAT_HYPERPOLY3DEXP(n, c10, zero, zero, zero, zero, rd1, zero, v, stress, flag, bound, bulk)
  call GLO_UTI_WRITE(GLO_UNIT_MESSAGE_FILE, 0_c_int32_t, "Info", "%I points computed, the last one has a stress of %R Pa", &
                     [n], [stress(n, 1)], [" "])
  call Shared_Analysis_XP_finalize(components)
end program first_call

! A line of a message: a service of the host, which comes before that of the reference host.
subroutine message_line(line, unit, width, thread, message, length) bind(c, name="LFC_XUT_XPLMSGC")
  use, intrinsic :: iso_c_binding
  implicit none
  integer(c_int64_t), value :: length
  character(kind=c_char), intent(in) :: line(length)
  integer(c_int32_t), intent(in) :: unit, width, thread, message
  print "(i0, 2x, *(a))", unit, line
  if (width < 0 .or. thread < 0 .or. message < 0) error stop "not a line"
end subroutine message_line
