! A block of 8-node bricks: gradient operators and volumes, and the stretch of each brick by the operator.
!
!   gfortran brick_block.f90 $(pkg-config --cflags --libs sharedanalysis-fortran sharedanalysis-host)
program brick_block
  use, intrinsic :: iso_c_binding
  use sharedanalysis
  implicit none
  integer(c_int32_t), parameter :: n = 64, ld = n + 1 ! a leading dimension that is no multiple of 64
  real(c_double) :: x(ld, 8, 3), b(ld, 8, 3)
  real(c_double), dimension(ld) :: hgdiag, hgstiff, vol, rvol, mask = 0
  real(c_double) :: gamma(ld, 8, 4), gradient(n)
  integer, parameter :: corner(8, 3) = reshape([0, 1, 1, 0, 0, 1, 1, 0, &
                                                0, 0, 1, 1, 0, 0, 1, 1, &
                                                0, 0, 0, 0, 1, 1, 1, 1], [8, 3])
  integer :: i, k

  do i = 1, ld ! edges grow from brick to brick
    x(i, :, :) = corner*(1 + 0.01_c_double*i)
  end do
  call SPX_OPE_C3D8ROPER2(n, ld, x, b, hgdiag, hgstiff, vol, rvol, gamma, mask)

  ! displacements u1 = 0.1 x1: the gradient is 0.1 in every brick
  gradient = 0
  do k = 1, 8
    gradient = gradient + b(:n, k, 1)*0.1_c_double*x(:n, k, 1)
  end do
  print "(a, f8.5, a, f8.5)", "volumes from ", vol(1), " to ", vol(n)
  print "(a, es8.1)", "largest error of a gradient: ", maxval(abs(gradient - 0.1_c_double))
  if (maxval(abs(gradient - 0.1_c_double)) > 1e-14_c_double) error stop "gradients are wrong"
end program brick_block
